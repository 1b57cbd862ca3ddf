#pragma once

#include <new>

/// What the calling thread allocates, counted and failed at will.
///
/// The test executable's own `malloc`, `calloc` and `realloc` replace those of the C library, so
/// this is whatever the process asks for on this thread: `new`, `kymalloc`, a string in any
/// library, and what the C library needs itself, for thread-local data and for slots of
/// `pthread_setspecific`. What a test asks for counts as well; `Exempt` leaves it out.
struct Allocations {
    static inline thread_local long count = 0;
    /// The allocation that fails: 1 is the next one, 0 none.
    static inline thread_local long failing = 0;
    /// Whether all that follow it fail as well, until `failing` is set to 0.
    static inline thread_local bool failingOnwards = false;
    /// How many have failed.
    static inline thread_local long failed = 0;

    /// Makes a call whose nth allocation fails, and all that follow where `onwards` is set.
    /// @return whether it threw `std::bad_alloc`
    template <typename Call>
    static bool stop(long nth, bool onwards, Call call) {
        bool threw = false;
        failingOnwards = onwards;
        failing = nth;
        try {
            call();
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        failing = 0;
        return threw;
    }

    /// What the thread allocates meanwhile is neither counted nor failed: stand-ins for drivers,
    /// libraries that end the process when they run out of memory, and the test itself.
    class Exempt {
    public:
        Exempt() { ++exempt; }
        ~Exempt() { --exempt; }
        Exempt(const Exempt&) = delete;
        Exempt& operator=(const Exempt&) = delete;
    };
    static inline thread_local int exempt = 0;  ///< how many of these the thread has
};
