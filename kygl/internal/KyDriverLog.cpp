#include "KyDriverLog.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

using Severity = KyShaderMessage::Severity;

constexpr Severity kSeverities[] = {Severity::Error, Severity::Warning};

// How a line begins that names a place in the text, up to the driver's words: '#' is the line
// there,
// '@' the column. The one string that a shader is made of has the number 0.
struct Form {
    std::string_view begin;
    Severity severity;  // None: the words begin with it
};

constexpr Form kForms[] = {
    {"0:#(@): ", Severity::None},         // Mesa
    {"0(#) : ", Severity::None},          // NVIDIA
    {"(#) : ", Severity::None},           // NVIDIA, before strings were counted
    {"ERROR: 0:#:@: ", Severity::Error},  // glslang, asked for columns
    {"WARNING: 0:#:@: ", Severity::Warning},
    {"ERROR: 0:#: ", Severity::Error},  // AMD, Apple, ANGLE, glslang
    {"WARNING: 0:#: ", Severity::Warning},
};

// How a line without a place begins that names its severity.
constexpr std::pair<std::string_view, Severity> kHeads[] = {
    {"error: ", Severity::Error},
    {"warning: ", Severity::Warning},
    {"ERROR: ", Severity::Error},
    {"WARNING: ", Severity::Warning},
};

constexpr std::string_view kBlanks = " \t";

bool isIndented(const std::string& text) {
    return kBlanks.find(text.front()) != std::string_view::npos;
}

// Words such as "error: text", "preprocessor warning: text" and "error C1008: text". What else
// comes before the colon stays with the text.
bool splitWords(const std::string& words, KyShaderMessage& message) {
    const std::size_t colon = words.find(": ");
    if (colon == std::string::npos) return false;
    std::string head = words.substr(0, colon);
    for (const Severity severity : kSeverities) {
        const std::string word = toString(severity);
        const std::size_t at = head.find(word);
        if (at == std::string::npos) continue;
        const bool hasBlank = head.compare(at + word.size(), 1, " ") == 0;
        head.erase(at, word.size() + (hasBlank ? 1 : 0));
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
    for (const auto& [head, severity] : kHeads) {
        if (line.compare(0, head.size(), head) != 0) continue;
        message.severity = severity;
        if (whole.empty()) continue;
        message.places = whole;
        message.text = line.substr(head.size());
    }
}

// Reads some digits off the front. @return whether there are any, and no more than fit
bool readNumber(std::string_view& text, long& number) {
    constexpr std::size_t kMostDigits = 9;
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    number = 0;
    for (const char digit : text.substr(0, std::min(digits, kMostDigits)))
        number = 10 * number + (digit - '0');
    text.remove_prefix(digits);
    return digits > 0 && digits <= kMostDigits;
}

// Reads the place that a line begins with. @return how many bytes that took; 0 for none
std::size_t readPlace(std::string_view line, std::string_view form, const KyPlaceOf& placeOf,
                      KyShaderPlace& place) {
    std::string_view rest = line;
    long number = 0;
    long column = 0;
    for (const char c : form) {
        if (c == '#' || c == '@') {
            if (!readNumber(rest, c == '#' ? number : column)) return 0;
        } else {
            if (rest.empty() || rest.front() != c) return 0;
            rest.remove_prefix(1);
        }
    }
    place = placeOf(number, column);
    return line.size() - rest.size();
}

// A line whose place is not found stays as it is, but keeps its severity.
KyShaderMessage readLine(const std::string& line, const std::vector<KyShaderPlace>& whole,
                         const KyPlaceOf& placeOf) {
    KyShaderMessage message;
    for (const Form& form : kForms) {
        KyShaderPlace place;
        const std::size_t end = readPlace(line, form.begin, placeOf, place);
        if (end == 0) continue;
        const std::string words = line.substr(end);
        message.text = words;
        message.severity = form.severity;
        const bool isRead = form.severity != Severity::None || splitWords(words, message);
        if (isRead && place.isKnown() && !message.text.empty())
            message.places = {place};
        else
            message.text = line;
        return message;
    }
    message.text = line;
    readSeverity(line, whole, message);
    return message;
}

bool isSamePlace(const KyShaderMessage& one, const KyShaderMessage& two) {
    if (one.places.size() != 1 || two.places.size() != 1) return false;
    const KyShaderPlace& a = one.places.front();
    const KyShaderPlace& b = two.places.front();
    return a.file == b.file && a.line == b.line && a.column == b.column && a.macro == b.macro;
}

// Mesa names the place of a call again in front of each candidate, NVIDIA does not.
bool explains(const KyShaderMessage& message, const KyShaderMessage& last) {
    if (last.severity == Severity::None || !isIndented(message.text)) return false;
    const bool isBare = message.places.empty() && message.severity == Severity::None;
    return isBare || (message.severity == last.severity && isSamePlace(message, last));
}

void append(std::vector<KyShaderMessage>& messages, KyShaderMessage message) {
    if (messages.empty() || !explains(message, messages.back())) {
        messages.push_back(std::move(message));
        return;
    }
    KyShaderMessage& last = messages.back();
    const std::size_t first = message.text.find_first_not_of(kBlanks);
    message.text.erase(0, std::min(first, message.text.size()));
    message.severity = Severity::Note;
    message.places = last.places;
    last.notes.push_back(std::move(message));
}

template <typename Function>
void forEachLine(const std::string& log, Function function) {
    std::size_t begin = 0;
    while (begin < log.size()) {
        const std::size_t end = std::min(log.find('\n', begin), log.size());
        std::string line = log.substr(begin, end - begin);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(kBlanks) != std::string::npos) function(line);
        begin = end + 1;
    }
}

// Mesa's sentences "... not written by vertex shader\n." put their full stop in front of the next.
void dropFullStop(std::string& line) {
    const auto isHead = [&](const auto& head) {
        return line.compare(1, head.first.size(), head.first) == 0;
    };
    if (line == "." ||
        (line.front() == '.' && std::any_of(std::begin(kHeads), std::end(kHeads), isHead)))
        line.erase(0, 1);
}

}  // namespace

std::vector<KyShaderMessage> kyReadDriverLog(const std::string& log, const KyPlaceOf& placeOf) {
    std::vector<KyShaderMessage> messages;
    forEachLine(log,
                [&](const std::string& line) { append(messages, readLine(line, {}, placeOf)); });
    return messages;
}

std::vector<KyShaderMessage> kyReadLinkLog(const std::string& log,
                                           const std::vector<KyShaderPlace>& pair,
                                           const KyPlaceOf& vertex, const KyPlaceOf& fragment) {
    const KyPlaceOf nowhere = [](long /*line*/, long /*column*/) { return KyShaderPlace(); };
    std::vector<KyShaderMessage> messages;
    const KyPlaceOf* placeOf = &nowhere;
    forEachLine(log, [&](std::string line) {
        dropFullStop(line);
        if (line.empty()) return;
        if (line == "Vertex info") placeOf = &vertex;
        if (line == "Fragment info") placeOf = &fragment;
        if (line == "Link info") placeOf = &nowhere;
        append(messages, readLine(line, pair, *placeOf));
    });
    return messages;
}
