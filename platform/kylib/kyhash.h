#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// 32-bit hashes whose low bits are as good as their high ones: tables mask them.
/// The values may differ between versions of the library; nothing may store them.
///@{

/// The hash of a text. Inline, because a switch of macros hashes each text that it names.
/// @param text zero-terminated, not null
inline unsigned int kyhash(const char* text) noexcept {
    const auto mix = [](std::uint64_t h, std::uint64_t word) {
        h = (h ^ word) * 0x9e3779b97f4a7c15U;
        return h ^ (h >> 32);
    };
    const std::size_t size = std::strlen(text);
    std::uint64_t h = mix(0, size);
    std::uint64_t word = 0;
    if (size < 8) {
        for (std::size_t i = 0; i < size; ++i)
            word = word << 8 | static_cast<unsigned char>(text[i]);
    } else {  // eight bytes a step, of which the last overlaps the one before
        for (std::size_t i = 0; i < size - 8; i += 8) {
            std::memcpy(&word, text + i, 8);
            h = mix(h, word);
        }
        std::memcpy(&word, text + size - 8, 8);
    }
    h = mix(h, word);
    return static_cast<unsigned int>(h ^ (h >> 29));
}

/// The hash of a number.
inline unsigned int kyhash(int value) noexcept {
    auto h = static_cast<unsigned int>(value);
    h = (h ^ (h >> 16)) * 0x7feb352dU;
    h = (h ^ (h >> 15)) * 0x846ca68bU;
    return h ^ (h >> 16);
}

///@}
