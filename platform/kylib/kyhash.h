#pragma once

#include <kylib/kylibApi.h>

/// 32-bit hashes whose low bits are as good as their high ones: tables mask them.
/// The values may differ between versions of the library; nothing may store them.
///@{

/// The hash of a text.
/// @param text zero-terminated, not null
KYLIB_API unsigned int kyhash(const char* text) noexcept;

/// The hash of a number.
inline unsigned int kyhash(int value) noexcept {
    auto h = static_cast<unsigned int>(value);
    h = (h ^ (h >> 16)) * 0x7feb352dU;
    h = (h ^ (h >> 15)) * 0x846ca68bU;
    return h ^ (h >> 16);
}

///@}
