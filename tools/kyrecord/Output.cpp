#include "Output.h"

#include <algorithm>
#include <cstdio>

namespace record {

namespace {

unsigned char byteAt(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

// @return how many bytes the UTF-8 character takes that the text begins with, 0 if it is none. The
// second byte has bounds of its own where the first would allow an overlong form, a surrogate or
// more than U+10FFFF.
std::size_t characterLength(std::string_view text) {
    const unsigned char first = byteAt(text, 0);
    if (first < 0x80) return 1;
    const std::size_t length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
    if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
    const unsigned char low = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
    const unsigned char high = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
    if (byteAt(text, 1) < low || byteAt(text, 1) > high) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if ((byteAt(text, i) & 0xc0) != 0x80) return 0;
    }
    return length;
}

std::string formatByte(const char* format, unsigned char byte) {
    char text[8];
    std::snprintf(text, sizeof text, format, byte);
    return text;
}

// The controls of ASCII, and those of Latin-1 that some terminals obey as well.
bool isControl(std::string_view character) {
    const unsigned char first = byteAt(character, 0);
    return first < 0x20 || first == 0x7f || (first == 0xc2 && byteAt(character, 1) < 0xa0);
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    while (!text.empty()) {
        const std::size_t length = characterLength(text);
        if (length == 0)
            result += "\\ufffd";
        else if (text.front() == '"' || text.front() == '\\')
            result.append("\\").append(text, 0, 1);
        else if (isControl(text.substr(0, length)))
            result += formatByte("\\u%04x", byteAt(text, length - 1));
        else
            result.append(text, 0, length);
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result + "\"";
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = std::max<std::size_t>(characterLength(text), 1);
        if (characterLength(text) == 0 || isControl(text.substr(0, length))) {
            for (std::size_t i = 0; i < length; ++i)
                result += formatByte("\\x%02x", byteAt(text, i));
        } else {
            result.append(text, 0, length);
        }
        text.remove_prefix(length);
    }
    return result;
}

std::string toText(const Pairs& pairs) {
    std::size_t width = 0;
    for (const auto& [key, value] : pairs)
        width = std::max(width, printable(key).size());
    width = std::min<std::size_t>(width, 16);  // a key that is longer than any good one stands out
    std::string text;
    for (const auto& [key, value] : pairs) {
        std::string line = printable(key);
        line.resize(std::max(line.size(), width), ' ');
        text += line + "  " + printable(value) + "\n";
    }
    return text;
}

std::string toJson(const Pairs& pairs) {
    std::string text;
    for (const auto& [key, value] : pairs)
        text += (text.empty() ? "{\n  " : ",\n  ") + quoted(key) + ": " + quoted(value);
    return text + "\n}\n";
}

}  // namespace record
