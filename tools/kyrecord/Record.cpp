#include "Record.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace record {

namespace {

constexpr std::string_view kMarker = "47Zandoriel11";
constexpr std::string_view kEndMarker = "11leirodnaZ74";
static_assert(kMarker.size() == kMarkerLength && kEndMarker.size() == kMarkerLength);

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// A value must not end the text, start a new pair or hide the record from the next search.
void checkValue(const std::string& key, std::string_view value) {
    using namespace std::string_literals;
    if (value.find_first_of("|\0"s) != std::string_view::npos)
        throw std::runtime_error("the value of " + key + " holds a '|' or a zero byte");
    if (contains(value, kMarker) || contains(value, kEndMarker))
        throw std::runtime_error("the value of " + key + " holds a marker of the record");
}

}  // namespace

// ---- finding

Search::Search() : mStart{kMarker}, mEnd{kEndMarker} {}

// A marker may lie across the seam of two pieces: so the bytes around each seam are searched as
// well, few enough on both sides that they hold no marker that is found anyway.
void Search::add(std::string_view piece) {
    const std::string seam =
        mTail + std::string(piece.substr(0, std::min(piece.size(), kMarkerLength - 1)));
    find(seam, mSize - mTail.size());
    find(piece, mSize);
    mSize += piece.size();
    const std::string_view end = piece.size() < kMarkerLength ? std::string_view(seam) : piece;
    mTail = end.substr(end.size() - std::min(end.size(), kMarkerLength - 1));
}

void Search::find(std::string_view text, std::uint64_t offset) {
    find(mStart, text, offset);
    find(mEnd, text, offset);
}

// memmem is linear whatever stands in the text.
void Search::find(Marker& marker, std::string_view text, std::uint64_t offset) {
    while (const void* found =
               memmem(text.data(), text.size(), marker.text.data(), marker.text.size())) {
        const auto at = static_cast<std::size_t>(static_cast<const char*>(found) - text.data());
        if (marker.count++ == 0) marker.first = offset + at;
        text.remove_prefix(at + kMarkerLength);
        offset += at + kMarkerLength;
    }
}

std::uint64_t Search::offset() const {
    if (mStart.count == 0) throw std::runtime_error("holds no build record");
    if (mStart.count > 1 || mEnd.count > 1)
        throw std::runtime_error("holds more than one marker of a build record");
    if (mEnd.count == 0 || mSize - mStart.first < kLength)
        throw std::runtime_error("its build record is cut short");
    if (mEnd.first != mStart.first + kEndDistance)
        throw std::runtime_error("the markers of its build record are not at their distance");
    return mStart.first;
}

std::string_view payloadOf(std::string_view record) {
    if (record.size() != kLength || record.substr(0, kMarkerLength) != kMarker ||
        record.substr(kEndDistance, kMarkerLength) != kEndMarker || record.back() != '\0')
        throw std::runtime_error("its build record is damaged");
    return record.substr(kMarkerLength, kPayloadLength);
}

// ---- payload

std::string compose(const Values& values) {
    Values all = {{"version_tag", "\\"}};
    for (const auto& [key, value] : values) {
        if (std::find(kKeys.begin(), kKeys.end(), key) == kKeys.end())
            throw std::runtime_error("the record has no key '" + key + "'");
        checkValue(key, value);
        all[key] = value;
    }
    std::string payload;
    for (const char* key : kKeys)
        payload.append("|").append(key).append("|").append(all[key]);
    if (payload.size() >= kPayloadLength)  // a zero must follow: the text is read up to there
        throw std::runtime_error("the values make a text of " + std::to_string(payload.size()) +
                                 " bytes, the record takes " + std::to_string(kPayloadLength - 1));
    payload.resize(kPayloadLength);
    return payload;
}

Pairs parse(std::string_view payload) {
    const std::string_view text = payload.substr(0, payload.find('\0'));
    if (text.empty()) throw std::runtime_error("its build record is not filled");
    if (text.front() != '|' || std::count(text.begin(), text.end(), '|') % 2 != 0)
        throw std::runtime_error("its build record is not made of pairs");
    Pairs pairs;
    std::size_t at = 1;
    while (at <= text.size()) {
        const std::size_t bar = text.find('|', at);
        const std::size_t end = std::min(text.find('|', bar + 1), text.size());
        pairs.emplace_back(text.substr(at, bar - at), text.substr(bar + 1, end - bar - 1));
        at = end + 1;
    }
    return pairs;
}

}  // namespace record
