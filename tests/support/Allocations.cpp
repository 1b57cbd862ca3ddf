#include "Allocations.h"

#include <pthread.h>
#include <cerrno>
#include <cstdlib>
#include <new>

// Calls from every library lead here, because the executable comes first where symbols are looked
// up. Sanitizers keep theirs under another name, and serve `new` without a call of `malloc`. They
// allocate before instrumented code can run, so this file is not instrumented.
#ifdef KYGL_SANITIZED
#define REAL(function) __interceptor_##function
#else
#define REAL(function) __libc_##function
#endif

extern "C" {

void* REAL(malloc)(std::size_t size);
void* REAL(calloc)(std::size_t nmemb, std::size_t size);
void* REAL(realloc)(void* ptr, std::size_t size);
}

namespace {

bool nextFails() {
    if (Allocations::exempt != 0) return false;
    ++Allocations::count;
    long& failing = Allocations::failing;
    if (failing == 0) return false;
    if (failing > 1) {
        --failing;
        return false;
    }
    if (!Allocations::failingOnwards) failing = 0;
    ++Allocations::failed;
    return true;
}

// A thread that sets one of its first 32 keys takes no memory for it, one that sets a later key
// may. The libraries that are to meet that make theirs after these.
void takeFirstKeys() {
    pthread_key_t key = 0;
    for (int i = 0; i < 32; ++i)
        pthread_key_create(&key, nullptr);
}
[[gnu::used, gnu::section(".preinit_array")]] void (*const sTakeFirstKeys)() = takeFirstKeys;

template <typename Allocate>
void* unlessFailing(Allocate allocate) {
    if (!nextFails()) return allocate();
    errno = ENOMEM;
    return nullptr;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    return unlessFailing([=] { return REAL(malloc)(size); });
}

void* calloc(std::size_t nmemb, std::size_t size) noexcept {
    return unlessFailing([=] { return REAL(calloc)(nmemb, size); });
}

void* realloc(void* ptr, std::size_t size) noexcept {
    return unlessFailing([=] { return REAL(realloc)(ptr, size); });
}

}  // extern "C"

#ifdef KYGL_SANITIZED

void* operator new(std::size_t bytes) {
    if (void* const block = malloc(bytes)) return block;
    throw std::bad_alloc();
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return malloc(bytes);
}
void* operator new[](std::size_t bytes) {
    return operator new(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return malloc(bytes);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

#endif
