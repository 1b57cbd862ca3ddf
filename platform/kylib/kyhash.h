#pragma once

#include <kylib/kylibApi.h>

/// 32-bit hashes for tables, which mask their low bits.
/// The values may differ between versions of the library; nothing may store them.
///@{

/// The hash of a text.
/// @param text zero-terminated, not null
KYLIB_API unsigned int kyhash(const char* text) noexcept;

/// The hash of a number: the exclusive or of its four bytes, in the lowest one. Ids are mostly
/// counted up, and numbers in a row fill all buckets alike; on a lookup under a lock every step of
/// a chain makes other threads wait.
inline unsigned int kyhash(int value) noexcept {
    auto h = static_cast<unsigned int>(value);
    h ^= h >> 16;
    return h ^ (h >> 8);
}

///@}
