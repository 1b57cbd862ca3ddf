#pragma once

#include "../support/TempShaders.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyShaderProgram.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include <malloc.h>

constexpr unsigned int kSoakContexts = 8;

struct SoakShaders : TempShaders {
    SoakShaders() {
        write("v", "#include \"lib\"\nvoid main() { gl_Position = vec4(shade); }\n");
        write("f", "#include \"lib\"\nvoid main() { gl_FragColor = vec4(shade); }\n");
        write("lib", "const float shade = float(SHADE) / 64.0;\n");
    }
};

/// Makes, uses and lets go of that many programs in the context, which is current.
inline void liveAndDie(const SoakShaders& shaders, unsigned int context, int count) {
    int failed = 0;
    for (int i = 0; i < count; ++i) {
        KyShaderProgram program;
        program.create("v", "f", shaders.folder);
        program.pushMacro(("SHADE " + std::to_string(i % 64)).c_str());
        program.setUniform("none", 1.0F);
        program.apply(context);
        failed += program.isApplied() ? 0 : 1;
        program.unUse();
        if (i % 50 == 49) KyDeferredDeleteMap::deferredDelete(context);
    }
    KyDeferredDeleteMap::deferredDelete(context);
    EXPECT_EQ(failed, 0);
}

inline std::size_t memoryInUse() {
    return mallinfo2().uordblks;
}
