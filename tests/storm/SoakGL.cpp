/// The same on the real driver, which is asked for every name at the end.
#include "Soak.h"

#include "../support/RealGLX.h"
#include "Rounds.h"

#include <memory>
#include <vector>

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>

using StormSoakGL = RealGLXTest;

TEST_F(StormSoakGL, twentyThousandPrograms) {
    constexpr int kPrograms = 2500;
    std::vector<std::unique_ptr<RealGLX>> contexts(
        kSoakContexts);  // drivers like one by one better
    for (std::unique_ptr<RealGLX>& context : contexts) {
        context = std::make_unique<RealGLX>();
        context->release();
    }
    for (Rounds rounds; rounds.goOn();) {
        soak(
            kPrograms, [&](unsigned int context) { contexts[context]->makeCurrent(); },
            [&](unsigned int context) { contexts[context]->release(); });
        long alive = 0;
        for (const std::unique_ptr<RealGLX>& context : contexts) {
            context->makeCurrent();
            for (GLuint name = 1; name < 10 * kPrograms; ++name)
                alive += glIsShader(name) + glIsProgram(name);
            context->release();
        }
        EXPECT_EQ(alive, 0) << "GL objects are left";
        std::printf("places tried: %u, faults found: %ld\n", kSoakContexts * kPrograms, alive);
    }
}
