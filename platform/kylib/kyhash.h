#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// 32-bit hashes for tables, which mask their low bits.
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

/// The hash of a number: the exclusive or of its four bytes, in the lowest one. Ids are mostly
/// counted up, and numbers in a row fill all buckets alike; on a lookup under a lock every step of
/// a chain makes other threads wait.
inline unsigned int kyhash(int value) noexcept {
    auto h = static_cast<unsigned int>(value);
    h ^= h >> 16;
    return h ^ (h >> 8);
}

///@}
