#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The build record: a marker, the payload, the marker reversed and a zero byte, in one piece. The
/// payload is a text of pairs, each `|`, key, `|`, value, and zeros behind it. Whatever is wrong
/// with one is thrown as std::runtime_error that says what.
namespace record {

constexpr std::size_t kMarkerLength = 13;
constexpr std::size_t kPayloadLength = 4254;
constexpr std::size_t kEndDistance = kMarkerLength + kPayloadLength;
constexpr std::size_t kLength = kEndDistance + kMarkerLength + 1;

/// All keys, in the order in which they stand in a payload.
constexpr std::array<const char*, 16> kKeys = {
    "version_tag", "comment",       "compiler",      "target_os",    "build_cfg", "build_user",
    "build_ip",    "build_time",    "filename",      "path",         "size",      "vendor",
    "product",     "version_major", "version_minor", "version_patch"};

using Values = std::map<std::string, std::string>;
using Pairs = std::vector<std::pair<std::string, std::string>>;

/// Searches a file that is handed over in consecutive pieces, in linear time.
class Search {
public:
    Search();
    void add(std::string_view piece);

    /// @return where the record starts. Throws unless the file holds each marker once, at the
    /// distance of a record.
    std::uint64_t offset() const;

private:
    struct Marker {
        std::string_view text;
        std::uint64_t count = 0;
        std::uint64_t first = 0;
    };
    void find(std::string_view text, std::uint64_t offset);
    static void find(Marker& marker, std::string_view text, std::uint64_t offset);

    Marker mStart, mEnd;
    std::string mTail;  // of what came before, too short for a marker
    std::uint64_t mSize = 0;
};

/// @return the payload with all keys in their order. A value that is not given is empty, save that
/// of `version_tag`, one backslash.
std::string compose(const Values& values);

/// @return the pairs in a payload, whatever their keys.
Pairs parse(std::string_view payload);

/// @return the payload of a whole record of kLength bytes.
std::string_view payloadOf(std::string_view record);

}  // namespace record
