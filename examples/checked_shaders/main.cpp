/// Shaders that the build checks: a fault in one stops it, and programs.txt lists the macro sets.
/// At run time the same files are built for the context that is there.
///
///     checked_shaders
#include "common/GlxBuffer.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderProgram.h>

#include <cstdio>
#include <stdexcept>

static void build(KyShaderProgram& program, const char* macros) {
    if (!program.compile(1)) throw std::runtime_error("this driver builds no program");
    std::printf("built %s\n", macros);
}

int main() try {
    const GlxBuffer context(16);
    kyglSetContext(1);
    KyShader::mFolderPath = EXAMPLES_ROOT;
    KyShaderProgram waves;
    waves.create("waves.vert", "waves.frag", "examples");
    build(waves, "without macros");
    waves.pushMacro("RINGS");
    build(waves, "with RINGS");
    waves.deleteProgram();
    KyDeferredDeleteMap::deferredDelete(1);
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "checked_shaders: %s\n", e.what());
    return 1;
}
