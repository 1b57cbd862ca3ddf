/// One texture in three GL contexts that share nothing. Its colours change between two frames, and
/// each context gets them when it binds the texture next.
///
///     shared_texture PICTURE.png
#include "common/GlxBuffer.h"
#include "common/Picture.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyTexture.h>

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace {

constexpr int kSize = 128;

// From low ground to high: red, green, blue and alpha.
constexpr unsigned char kSummer[] = {51, 102, 51, 255, 153, 204, 102, 255, 204, 153, 51, 255};
constexpr unsigned char kWinter[] = {51, 51, 102, 255, 153, 153, 204, 255, 255, 255, 255, 255};

void drawDisc() {
    constexpr int kCorners = 60;
    glBegin(GL_TRIANGLE_FAN);
    glTexCoord1f(1);
    glVertex2f(0, 0);
    glTexCoord1f(0);
    for (int i = 0; i <= kCorners; ++i) {
        const float turn = 6.2831853F * static_cast<float>(i) / kCorners;
        glVertex2f(std::cos(turn), std::sin(turn));
    }
    glEnd();
}

// @param axis along which the colours change
void drawSquare(int axis) {
    constexpr GLint kCorners[][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    glBegin(GL_QUADS);
    for (const auto& corner : kCorners) {
        glTexCoord1i(corner[axis]);
        glVertex2i(2 * corner[0] - 1, 2 * corner[1] - 1);
    }
    glEnd();
}

// With the context current.
void drawFrame(unsigned int context, KyTexture& colours) {
    if (colours.bindTexture(context) == 0) throw std::runtime_error("the texture has no pixels");
    // Perhaps it was made just now. A fresh texture wants mipmaps, has none, and does not show.
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glEnable(GL_TEXTURE_1D);
    glClear(GL_COLOR_BUFFER_BIT);
    if (context == 3)
        drawDisc();
    else
        drawSquare(context == 1 ? 0 : 1);
}

void run(const char* file) {
    const GlxBuffer contexts[3] = {GlxBuffer(kSize), GlxBuffer(kSize), GlxBuffer(kSize)};
    KyTexture colours;
    Picture picture(6 * kSize, kSize);
    for (int frame = 0; frame < 2; ++frame) {
        colours.create1D(frame == 0 ? kSummer : kWinter, 3);  // copies; needs no context
        for (unsigned int id = 1; id <= 3; ++id) {
            contexts[id - 1].makeCurrent();
            kyglSetContext(id);
            drawFrame(id, colours);
            picture.grab((3 * frame + static_cast<int>(id) - 1) * kSize, kSize);
            const long old = KyDeferredDeleteMap::pending(id).textures;
            KyDeferredDeleteMap::deferredDelete(id);
            std::printf("frame %d, context %u: %ld old textures deleted\n", frame, id, old);
        }
    }
    picture.writePng(file);

    // Its destructor would leave the GL textures to their contexts: a module that comes and goes
    // while the contexts stay hands them over first.
    colours.destroy();
    for (unsigned int id = 1; id <= 3; ++id) {
        contexts[id - 1].makeCurrent();
        KyDeferredDeleteMap::deferredDelete(id);
    }
    kyglClearAllContexts();
    std::printf("%ld GL objects left\n", KyDeferredDeleteMap::pending().total());
}

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) throw std::runtime_error("usage: shared_texture PICTURE.png");
    run(argv[1]);
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "shared_texture: %s\n", e.what());
    return 1;
}
