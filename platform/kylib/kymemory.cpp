#include <kylib/kymemory.h>

#include <cstdlib>
#include <new>

void* kymalloc(std::size_t bytes) {
    void* const block = std::malloc(bytes != 0 ? bytes : 1);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void* kyrealloc(void* block, std::size_t bytes) {
    void* const moved = std::realloc(block, bytes != 0 ? bytes : 1);
    if (moved == nullptr) throw std::bad_alloc();
    return moved;
}

void kyfree(void* block) noexcept {
    std::free(block);
}
