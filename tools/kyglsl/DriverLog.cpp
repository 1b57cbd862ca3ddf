#include "DriverLog.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace {

// How a line begins that names a place in the text, up to the driver's words. The one string that
// a shader is made of has the number 0.
struct Form {
    const char* begin;     // for sscanf: the line, and how many bytes that took
    const char* severity;  // null: it is told in the words
};

constexpr Form kForms[] = {
    {"0:%9ld(%*9d): %n", nullptr},
    {"0(%9ld) : %n", nullptr},
    {"ERROR: 0:%9ld: %n", "error"},
    {"WARNING: 0:%9ld: %n", "warning"},
};

// Words such as "error: text", "preprocessor warning: text" and "error C1008: text". What else
// stands in front of the colon stays with the text.
bool splitWords(const std::string& words, Message& message) {
    const std::size_t colon = words.find(": ");
    if (colon == std::string::npos) return false;
    std::string head = words.substr(0, colon);
    for (const std::string severity : {"error", "warning"}) {
        const std::size_t at = head.find(severity);
        if (at == std::string::npos) continue;
        head.erase(at, severity.size());
        const std::size_t first = head.find_first_not_of(' ');
        const std::size_t last = head.find_last_not_of(' ');
        message.severity = severity;
        message.text = words.substr(colon + 2);
        if (first != std::string::npos)
            message.text.insert(0, head.substr(first, last + 1 - first) + ": ");
        return true;
    }
    return false;
}

Message readLine(const std::string& line, const std::function<Place(long line)>& placeOf) {
    for (const Form& form : kForms) {
        long number = 0;
        int end = 0;
        if (std::sscanf(line.c_str(), form.begin, &number, &end) < 1 || end == 0) continue;
        Message message{placeOf(number), "", line.substr(static_cast<std::size_t>(end))};
        if (message.place.file.empty()) break;
        if (form.severity != nullptr)
            message.severity = form.severity;
        else if (!splitWords(message.text, message))
            break;
        return message;
    }
    return {{}, "", line};
}

}  // namespace

std::vector<Message> readDriverLog(const std::string& log,
                                   const std::function<Place(long line)>& placeOf) {
    std::vector<Message> messages;
    std::size_t begin = 0;
    while (begin < log.size()) {
        const std::size_t end = std::min(log.find('\n', begin), log.size());
        std::string line = log.substr(begin, end - begin);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) messages.push_back(readLine(line, placeOf));
        begin = end + 1;
    }
    return messages;
}
