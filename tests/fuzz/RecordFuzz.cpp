/// Takes any bytes for a file with a record and for a payload, and holds what comes of it against
/// what can be told by simpler means.
#include "Output.h"
#include "Require.h"

#include <algorithm>
#include <stdexcept>

namespace {

std::size_t countOf(std::string_view text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string_view::npos;
         at = text.find(part, at + 1))
        ++count;
    return count;
}

// As one piece and as many: @return whether there is a record, at the same place
bool search(std::string_view file, std::size_t pieceLength, std::uint64_t& offset) {
    record::Search search;
    for (std::size_t at = 0; at < file.size(); at += pieceLength)
        search.add(file.substr(at, pieceLength));
    try {
        offset = search.offset();
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

void print(std::string_view payload) {
    record::Pairs pairs;
    try {
        pairs = record::parse(payload);
    } catch (const std::runtime_error&) {
        return;
    }
    require(2 * pairs.size() == countOf(payload.substr(0, payload.find('\0')), "|"));
    const auto isControl = [](char c) { return (c >= 0 && c < ' ' && c != '\n') || c == 0x7f; };
    for (const std::string& text : {record::toText(pairs), record::toJson(pairs)})
        require(std::none_of(text.begin(), text.end(), isControl));
    const auto lines = static_cast<std::ptrdiff_t>(pairs.size());
    const std::string text = record::toText(pairs), json = record::toJson(pairs);
    require(std::count(text.begin(), text.end(), '\n') == lines);
    require(std::count(json.begin(), json.end(), '\n') == lines + 2);
}

// What is composed is read back.
void compose(std::string_view payload) {
    record::Values values;
    for (const char* key : record::kKeys) {
        const std::size_t length = std::min(payload.size(), payload.find('\n'));
        values[key] = payload.substr(0, length);
        payload.remove_prefix(std::min(payload.size(), length + 1));
    }
    try {
        const record::Pairs pairs = record::parse(record::compose(values));
        require(record::Values(pairs.begin(), pairs.end()) == values && pairs.size() == 16);
    } catch (const std::runtime_error&) {
        return;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string_view file(reinterpret_cast<const char*>(data), size);
    if (file.empty()) return 0;
    std::uint64_t whole = 0, pieced = 0;
    const bool found = search(file, size, whole);
    require(search(file, 1U + data[0], pieced) == found && whole == pieced);
    require(!found || (countOf(file, "47Zandoriel11") == 1 && countOf(file, "11leirodnaZ74") == 1));
    if (found && file[whole + record::kLength - 1] == '\0')
        print(record::payloadOf(file.substr(whole, record::kLength)));
    print(file.substr(0, record::kPayloadLength));
    compose(file);
    return 0;
}
