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

// A line without a place may still begin with its severity.
void readSeverity(const std::string& line, const Place& whole, Message& message) {
    for (const std::string severity : {"error", "warning"}) {
        if (line.compare(0, severity.size() + 2, severity + ": ") != 0) continue;
        message.severity = severity;
        if (whole.file.empty()) continue;
        message.place = whole;
        message.text = line.substr(severity.size() + 2);
    }
}

// A line whose place is not found stays as it is, but keeps its severity.
Message readLine(const std::string& line, const Place& whole, const PlaceOf& placeOf) {
    Message message;
    for (const Form& form : kForms) {
        long number = 0;
        int end = 0;
        if (std::sscanf(line.c_str(), form.begin, &number, &end) < 1 || end == 0) continue;
        const std::string words = line.substr(static_cast<std::size_t>(end));
        message.text = words;
        if (form.severity != nullptr) message.severity = form.severity;
        if (form.severity != nullptr || splitWords(words, message)) message.place = placeOf(number);
        if (message.place.file.empty()) message.text = line;
        return message;
    }
    message.text = line;
    readSeverity(line, whole, message);
    return message;
}

template <typename Function>
void forEachLine(const std::string& log, Function function) {
    std::size_t begin = 0;
    while (begin < log.size()) {
        const std::size_t end = std::min(log.find('\n', begin), log.size());
        std::string line = log.substr(begin, end - begin);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) function(line);
        begin = end + 1;
    }
}

}  // namespace

std::vector<Message> readDriverLog(const std::string& log, const PlaceOf& placeOf) {
    std::vector<Message> messages;
    forEachLine(log,
                [&](const std::string& line) { messages.push_back(readLine(line, {}, placeOf)); });
    return messages;
}

std::vector<Message> readLinkLog(const std::string& log, const Place& pair, const PlaceOf& vertex,
                                 const PlaceOf& fragment) {
    std::vector<Message> messages;
    PlaceOf placeOf = [](long /*line*/) { return Place(); };
    forEachLine(log, [&](const std::string& line) {
        if (line == "Vertex info") placeOf = vertex;
        if (line == "Fragment info") placeOf = fragment;
        messages.push_back(readLine(line, pair, placeOf));
    });
    return messages;
}
