/// Programs born and dead by the hundred thousand: nothing stays, in the GL or in memory.
#include "Soak.h"
#include "../support/TempShaders.h"
#include "../support/Together.h"
#include "ModelGL.h"
#include "Rounds.h"

#include <gtest/gtest.h>

TEST(StormSoak, aQuarterMillionPrograms) {
    const SoakShaders shaders;
    for (Rounds rounds; rounds.goOn();) {
        ModelGL gl;
        const auto live = [&](unsigned int context, int count) {
            ModelGL::makeCurrent(context);
            liveAndDie(shaders, context, count);
        };
        runTogether(kSoakContexts, [&](unsigned int i) { live(i + 1, 6250); });
        const std::size_t early = memoryInUse();
        runTogether(kSoakContexts, [&](unsigned int i) { live(i + 1, 25000); });
        const std::size_t late = memoryInUse();
        EXPECT_EQ(gl.objects(), 0U);
        EXPECT_TRUE(gl.wrongs.empty()) << gl.wrongs.front();
        EXPECT_LT(late, early + 65536) << "memory grows";
        std::printf("places tried: %u, faults found: %zu, bytes in use: %zu, then %zu\n",
                    kSoakContexts * 31250, gl.objects() + gl.wrongs.size(), early, late);
    }
}
