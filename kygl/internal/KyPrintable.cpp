#include "KyPrintable.h"

#include <algorithm>
#include <cstdio>

std::size_t kyUtf8Length(const std::string& text, std::size_t at) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
    };
    const unsigned int first = byte(at);
    if (first < 0x80) return 1;
    const std::size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (length == 0 || first > 0xF4) return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(at + i) & 0xC0) != 0x80) return 0;
    const unsigned int second = byte(at + 1);  // no long forms, surrogates or numbers too large
    const bool bad = (first == 0xE0 && second < 0xA0) || (first == 0xED && second > 0x9F) ||
                     (first == 0xF0 && second < 0x90) || (first == 0xF4 && second > 0x8F);
    return bad ? 0 : length;
}

std::string kyPrintable(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size();) {
        const std::size_t length = kyUtf8Length(text, i);
        const auto byte = static_cast<unsigned char>(text[i]);
        // Some terminals obey the controls of Latin-1 as well.
        const bool isControl = (byte < 0x20 && byte != '\t') || byte == 0x7F ||
                               (byte == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0);
        for (const std::size_t end = i + std::max<std::size_t>(length, 1); i < end; ++i) {
            if (length > 0 && !isControl) {
                out += text[i];
                continue;
            }
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\x%02x", static_cast<unsigned char>(text[i]));
            out += escape;
        }
    }
    return out;
}
