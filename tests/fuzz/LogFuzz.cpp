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

void check(const KyShaderMessage& message, const std::string& line, const Text* text) {
    const std::string severity = toString(message.severity);
    if (message.places.empty()) {
        require(message.text == line);
    } else if (message.places.size() == 2) {
        require(line == severity + ": " + message.text);
    } else {
        const KyShaderPlace& place = message.places.front();
        require(text != nullptr && place.file == text->file && place.line % 3 != 0);
        require(text->asked.count(place.line) == 1 && !severity.empty());
        require(isFrom(message.text, line));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string log(reinterpret_cast<const char*>(data), size);
    Text vertex{"v"}, fragment{"f"};
    const std::vector<KyShaderMessage> compiled = kyReadDriverLog(log, vertex.placeOf());
    const std::vector<KyShaderMessage> linked =
        kyReadLinkLog(log, {{"v"}, {"f"}}, vertex.placeOf(), fragment.placeOf());
    const Text* heading = nullptr;
    std::size_t count = 0;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        if (line == "Vertex info") heading = &vertex;
        if (line == "Fragment info") heading = &fragment;
        check(compiled.at(count), line, &vertex);
        check(linked.at(count++), line, heading);
    }
    require(compiled.size() == count && linked.size() == count);
    return 0;
}
