#include "KyDriverLog.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace {

using Severity = KyShaderMessage::Severity;

constexpr Severity kSeverities[] = {Severity::Error, Severity::Warning};

// How a line begins that names a place in the text, up to the driver's words. The one string that
// a shader is made of has the number 0.
struct Form {
    const char* begin;  // for sscanf: the line, the column if there is one, the bytes that it took
    bool hasColumn;
    Severity severity;  // None: the words begin with it
};

constexpr Form kForms[] = {
    {"0:%9ld(%9ld): %n", true, Severity::None},
    {"0(%9ld) : %n", false, Severity::None},
    {"ERROR: 0:%9ld: %n", false, Severity::Error},
    {"WARNING: 0:%9ld: %n", false, Severity::Warning},
};

// Words such as "error: text", "preprocessor warning: text" and "error C1008: text". What else
// stands in front of the colon stays with the text.
bool splitWords(const std::string& words, KyShaderMessage& message) {
    const std::size_t colon = words.find(": ");
    if (colon == std::string::npos) return false;
    std::string head = words.substr(0, colon);
    for (const Severity severity : kSeverities) {
        const std::string word = toString(severity);
        const std::size_t at = head.find(word);
        if (at == std::string::npos) continue;
        head.erase(at, word.size());
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
void readSeverity(const std::string& line, const std::vector<KyShaderPlace>& whole,
                  KyShaderMessage& message) {
    for (const Severity severity : kSeverities) {
        const std::string word = toString(severity) + std::string(": ");
        if (line.compare(0, word.size(), word) != 0) continue;
        message.severity = severity;
        if (whole.empty()) continue;
        message.places = whole;
        message.text = line.substr(word.size());
    }
}

// Reads the place that a line begins with. @return how many bytes that took; 0 for none
std::size_t readPlace(const std::string& line, const Form& form, const KyPlaceOf& placeOf,
                      KyShaderPlace& place) {
    long number = 0;
    long column = 0;
    int end = 0;
    const int read = form.hasColumn
                         ? std::sscanf(line.c_str(), form.begin, &number, &column, &end) - 1
                         : std::sscanf(line.c_str(), form.begin, &number, &end);
    if (read < 1 || end == 0) return 0;
    place = placeOf(number, column);
    return static_cast<std::size_t>(end);
}

// A line whose place is not found stays as it is, but keeps its severity.
KyShaderMessage readLine(const std::string& line, const std::vector<KyShaderPlace>& whole,
                         const KyPlaceOf& placeOf) {
    KyShaderMessage message;
    for (const Form& form : kForms) {
        KyShaderPlace place;
        const std::size_t end = readPlace(line, form, placeOf, place);
        if (end == 0) continue;
        const std::string words = line.substr(end);
        message.text = words;
        message.severity = form.severity;
        const bool isRead = form.severity != Severity::None || splitWords(words, message);
        if (isRead && place.isKnown())
            message.places = {place};
        else
            message.text = line;
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

std::vector<KyShaderMessage> kyReadDriverLog(const std::string& log, const KyPlaceOf& placeOf) {
    std::vector<KyShaderMessage> messages;
    forEachLine(log,
                [&](const std::string& line) { messages.push_back(readLine(line, {}, placeOf)); });
    return messages;
}

std::vector<KyShaderMessage> kyReadLinkLog(const std::string& log,
                                           const std::vector<KyShaderPlace>& pair,
                                           const KyPlaceOf& vertex, const KyPlaceOf& fragment) {
    std::vector<KyShaderMessage> messages;
    KyPlaceOf placeOf = [](long /*line*/, long /*column*/) { return KyShaderPlace(); };
    forEachLine(log, [&](const std::string& line) {
        if (line == "Vertex info") placeOf = vertex;
        if (line == "Fragment info") placeOf = fragment;
        messages.push_back(readLine(line, pair, placeOf));
    });
    return messages;
}
