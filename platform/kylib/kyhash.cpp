#include <kylib/kyhash.h>

#include <cstdint>
#include <cstring>

namespace {

std::uint64_t mix(std::uint64_t h, std::uint64_t word) {
    h = (h ^ word) * 0x9e3779b97f4a7c15U;
    return h ^ (h >> 32);
}

}  // namespace

// Eight bytes a step: the texts are macro lines and font names of a few words, hashed on the
// road of a macro switch.
unsigned int kyhash(const char* text) noexcept {
    std::size_t left = std::strlen(text);
    std::uint64_t h = mix(0, left);
    for (; left >= 8; text += 8, left -= 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text, 8);
        h = mix(h, word);
    }
    std::uint64_t tail = 0;
    std::memcpy(&tail, text, left);
    h = mix(h, tail);
    return static_cast<unsigned int>(h ^ (h >> 29));
}
