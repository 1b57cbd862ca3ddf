/// Programs born and dead by the hundred thousand: nothing stays, in the GL or in memory.
#include "Soak.h"

#include "../support/RecordedGL.h"
#include "Rounds.h"

TEST(StormSoak, aQuarterMillionPrograms) {
    constexpr int kPrograms = 31250;
    for (Rounds rounds; rounds.goOn();) {
        RecordedGL gl;
        gl.muted = true;
        soak(
            kPrograms, [](unsigned int context) { RecordedGL::current = context; },
            [](unsigned int) { RecordedGL::current = 0; });
        EXPECT_TRUE(gl.wrongs.empty()) << gl.wrongs.front();
        EXPECT_TRUE(gl.objects.empty());
        std::printf("places tried: %u, faults found: %zu\n", kSoakContexts * kPrograms,
                    gl.objects.size() + gl.wrongs.size());
    }
}
