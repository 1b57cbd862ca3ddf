#pragma once

#include <kylib/kylibApi.h>

#include <cstddef>

/// @file
/// Byte allocation for the growing arrays. Any thread may call.
///
/// Callers do not test the results, so a failure never comes back as null: `kymalloc` and
/// `kyrealloc` throw `std::bad_alloc`, and a block whose `kyrealloc` failed stays as it was.
///@{

/// Allocates a block.
/// @param bytes size of the block; 0 gives a block that must be released like any other
/// @return storage aligned for every fundamental type
KYLIB_API void* kymalloc(std::size_t bytes);

/// Changes the size of a block.
/// @param block a block from `kymalloc` or `kyrealloc`, never null
/// @param bytes the new size
/// @return the block, moved if need be, with its content kept up to the smaller size
KYLIB_API void* kyrealloc(void* block, std::size_t bytes);

/// Releases a block.
/// @param block a block from `kymalloc` or `kyrealloc`, never null
KYLIB_API void kyfree(void* block) noexcept;

///@}
