#include "ColourTable.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <GL/gl.h>

namespace {

constexpr int kTexels = 256;
constexpr std::size_t kColours = 6;
using Colour = std::array<float, 3>;

// From valley to summit. Both grow lighter all the way, so that they are read without a legend and
// by those who see few colours.
constexpr std::array<Colour, kColours> kTables[ColourTable::kTables] = {
    {{{0.37F, 0.57F, 0.46F},
      {0.54F, 0.69F, 0.49F},
      {0.74F, 0.79F, 0.55F},
      {0.90F, 0.84F, 0.62F},
      {0.95F, 0.88F, 0.76F},
      {0.99F, 0.97F, 0.95F}}},
    {{{0.31F, 0.35F, 0.56F},
      {0.50F, 0.41F, 0.62F},
      {0.74F, 0.47F, 0.58F},
      {0.92F, 0.60F, 0.50F},
      {0.98F, 0.78F, 0.56F},
      {1.00F, 0.94F, 0.77F}}},
};

std::array<unsigned char, std::size_t{4} * kTexels> texels(int table) {
    std::array<unsigned char, std::size_t{4} * kTexels> bytes{};
    for (std::size_t i = 0; i < kTexels; ++i) {
        const float place = static_cast<float>(i * (kColours - 1)) / (kTexels - 1);
        const auto below = std::min(static_cast<std::size_t>(place), kColours - 2);
        const float part = place - static_cast<float>(below);
        for (std::size_t c = 0; c < 3; ++c) {
            const float from = kTables[table][below][c];
            const float to = kTables[table][below + 1][c];
            bytes[4 * i + c] =
                static_cast<unsigned char>(std::lround(255 * (from + part * (to - from))));
        }
        bytes[4 * i + 3] = 255;
    }
    return bytes;
}

}  // namespace

void ColourTable::show(int table) {
    const std::lock_guard<std::mutex> hold(mMutex);
    if (table == mTable) return;
    mTable = table;
    mTexture.create1D(texels(table).data(), kTexels);
}

// A texture that was made just now has GL's own filter, which asks for levels that are not there.
void ColourTable::bind(unsigned int context) {
    const std::lock_guard<std::mutex> hold(mMutex);
    mTexture.bindTexture(context);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
}

void ColourTable::release() {
    const std::lock_guard<std::mutex> hold(mMutex);
    mTexture.destroy();
}
