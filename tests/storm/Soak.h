#pragma once

#include "../support/TempShaders.h"
#include "../support/Together.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyShaderProgram.h>

#include <gtest/gtest.h>

#include <string>

#include <malloc.h>

constexpr unsigned int kSoakContexts = 8;

/// Makes, uses and lets go of programs, that many in each context on a thread of its own.
/// @param enter,leave make a context current and release it
template <typename Enter, typename Leave>
void soak(int programs, Enter enter, Leave leave) {
    const TempShaders tree;
    tree.write("v", "#include \"lib\"\nvoid main() { gl_Position = vec4(shade); }\n");
    tree.write("f", "#include \"lib\"\nvoid main() { gl_FragColor = vec4(shade); }\n");
    tree.write("lib", "const float shade = float(SHADE) / 64.0;\n");
    const auto live = [&](unsigned int context, int count) {
        enter(context);
        for (int i = 0; i < count; ++i) {
            KyShaderProgram program;
            program.create("v", "f", tree.folder);
            program.pushMacro(("SHADE " + std::to_string(i % 64)).c_str());
            program.setUniform("none", 1.0F);
            program.apply(context);
            ASSERT_TRUE(program.isApplied());
            program.unUse();
            if (i % 50 == 0) KyDeferredDeleteMap::deferredDelete(context);
        }
        KyDeferredDeleteMap::deferredDelete(context);
        leave(context);
    };
    std::size_t inUse[2] = {};
    for (std::size_t& bytes : inUse) {
        runTogether(kSoakContexts, [&](unsigned int i) { live(i, programs / 2); });
        bytes = mallinfo2().uordblks;
    }
    EXPECT_LT(inUse[1], inUse[0] + (std::size_t{1} << 18)) << "memory grows";
}
