#pragma once

/// What the calling thread allocates through `new`, `kymalloc` and `kyrealloc`, counted by the
/// test executable's own versions of these. Strings of the foundation allocate unseen.
struct Allocations {
    static inline thread_local long count = 0;
    /// The allocation that fails with `std::bad_alloc`: 1 is the next one, 0 none.
    static inline thread_local long failing = 0;
};
