/// Takes any bytes for a driver's log, and holds what is read against its lines.
#include "KyDriverLog.h"
#include "Require.h"

#include <set>
#include <sstream>

namespace {

// Some lines have no place. What is asked for is noted.
struct Text {
    std::string file;
    std::set<long> asked = {};

    KyPlaceOf placeOf() {
        return [this](long line, long column) {
            asked.insert(line);
            return line % 3 == 0 ? KyShaderPlace() : KyShaderPlace{file, line, column};
        };
    }
};

// Nothing is added to the words of the line, and they stay whole after the last colon.
bool isFrom(const std::string& text, const std::string& line) {
    auto next = text.begin();
    for (const char c : line)
        if (next != text.end() && *next == c) ++next;
    const std::size_t colon = text.rfind(": ");
    const std::string tail = text.substr(colon == std::string::npos ? 0 : colon + 2);
    const std::size_t at = line.rfind(tail);
    return next == text.end() && at + tail.size() == line.size() && at > 0 &&
           std::string(": \t\v\f\r").find(line[at - 1]) != std::string::npos;
}

bool endsWith(const std::string& line, const std::string& text) {
    return line.size() >= text.size() &&
           line.compare(line.size() - text.size(), text.size(), text) == 0;
}

void check(const KyShaderMessage& message, const std::string& line, const Text* text) {
    const std::string severity = toString(message.severity);
    if (message.places.empty()) {
        require(message.text == line);
    } else if (message.places.size() == 2) {
        require(line.size() == severity.size() + 2 + message.text.size());
        require(endsWith(line, ": " + message.text));
    } else {
        const KyShaderPlace& place = message.places.front();
        require(text != nullptr && place.file == text->file && place.line % 3 != 0);
        require(text->asked.count(place.line) == 1 && !severity.empty());
        require(isFrom(message.text, line));
    }
}

// A note is indented in its line, and has the place of its message.
void checkNote(const KyShaderMessage& note, const KyShaderMessage& of, const std::string& line) {
    require(note.severity == KyShaderMessage::Severity::Note && note.notes.empty());
    require(of.severity != KyShaderMessage::Severity::None);
    require(toString(KyShaderMessage{note.places}) == toString(KyShaderMessage{of.places}));
    require(endsWith(line, " " + note.text) || endsWith(line, "\t" + note.text));
}

// Takes the lines of a log one after the other: each is a message or a note of the last one.
class Reading {
public:
    explicit Reading(const std::vector<KyShaderMessage>& messages) : mMessages(messages) {}

    void take(const std::string& line, const Text* text) {
        if (mNext > 0 && mNote < mMessages[mNext - 1].notes.size()) {
            const KyShaderMessage& last = mMessages[mNext - 1];
            checkNote(last.notes[mNote++], last, line);
        } else {
            check(mMessages.at(mNext++), line, text);
            mNote = 0;
        }
    }
    void end() const {
        require(mNext == mMessages.size());
        require(mNext == 0 || mNote == mMessages.back().notes.size());
    }

private:
    const std::vector<KyShaderMessage>& mMessages;
    std::size_t mNext = 0;
    std::size_t mNote = 0;
};

// Mesa's full stop.
std::string inLink(const std::string& line) {
    for (const char* const head : {".error: ", ".warning: ", ".ERROR: ", ".WARNING: "})
        if (line.rfind(head, 0) == 0) return line.substr(1);
    return line;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string log(reinterpret_cast<const char*>(data), size);
    Text vertex{"v"}, fragment{"f"};
    const std::vector<KyShaderMessage> compiled = kyReadDriverLog(log, vertex.placeOf());
    const std::vector<KyShaderMessage> linked =
        kyReadLinkLog(log, {{"v"}, {"f"}}, vertex.placeOf(), fragment.placeOf());
    Reading compile(compiled), link(linked);
    const Text* heading = nullptr;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") == std::string::npos) continue;
        if (line == "Vertex info") heading = &vertex;
        if (line == "Fragment info") heading = &fragment;
        if (line == "Link info") heading = nullptr;
        compile.take(line, &vertex);
        if (line != ".") link.take(inLink(line), heading);
    }
    compile.end();
    link.end();
    return 0;
}
