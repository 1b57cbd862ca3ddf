#include "Allocations.h"

#include <kylib/kymemory.h>

#include <cstdlib>
#include <new>

namespace {

void* counted(void* old, std::size_t bytes) {
    ++Allocations::count;
    if (Allocations::failing != 0 && --Allocations::failing == 0) throw std::bad_alloc();
    void* const block = std::realloc(old, bytes != 0 ? bytes : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

void* kymalloc(std::size_t bytes) {
    return counted(nullptr, bytes);
}
void* kyrealloc(void* block, std::size_t bytes) {
    return counted(block, bytes);
}
void* operator new(std::size_t bytes) {
    return counted(nullptr, bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return std::malloc(bytes);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
