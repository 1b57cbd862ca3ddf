/// The same on the real driver, which is asked for every name at the end.
#include "../support/RealGLX.h"
#include "../support/Together.h"
#include "Rounds.h"
#include "Soak.h"

#include <kygl/KyShader.h>

#include <memory>
#include <vector>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>

using StormSoakGL = RealGLXTest;

TEST_F(StormSoakGL, twentyThousandPrograms) {
    constexpr int kPrograms = 2500;
    const SoakShaders shaders;
    gl->release();
    std::vector<std::unique_ptr<RealGLX>> contexts;  // one by one, which drivers like better
    for (unsigned int i = 0; i < kSoakContexts; ++i) {
        contexts.push_back(std::make_unique<RealGLX>());
        contexts.back()->release();
    }
    for (Rounds rounds; rounds.goOn();) {
        const auto live = [&](unsigned int i, int count) {
            contexts[i]->makeCurrent();
            liveAndDie(shaders, i + 1, count);
            contexts[i]->release();
        };
        runTogether(kSoakContexts, [&](unsigned int i) { live(i, kPrograms / 5); });
        const std::size_t early = memoryInUse();
        runTogether(kSoakContexts, [&](unsigned int i) { live(i, kPrograms - kPrograms / 5); });
        const std::size_t late = memoryInUse();
        long alive = 0;
        for (const auto& context : contexts) {
            context->makeCurrent();
            for (GLuint name = 1; name < 10 * kPrograms; ++name)
                alive += glIsShader(name) + glIsProgram(name);
            context->release();
        }
        EXPECT_EQ(alive, 0) << "GL objects are left";
        EXPECT_LT(late, early + (std::size_t{1} << 20)) << "memory grows";
        std::printf("places tried: %u, faults found: %ld, bytes in use: %zu, then %zu\n",
                    kSoakContexts * kPrograms, alive, early, late);
    }
}
