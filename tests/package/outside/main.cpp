/// A client of an installed libkygl: puts the program of an example in use and tells what it is.
/// Usage: outside FOLDER, the one that share/shaders lies in.
#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderProgram.h>

#include <cstdio>

#include <GL/glx.h>

int main(int argc, char** argv) {
    Display* const display = XOpenDisplay(nullptr);
    if (argc != 2 || display == nullptr) return 2;
    const int wanted[] = {GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT, None};
    const int size[] = {GLX_PBUFFER_WIDTH, 8, GLX_PBUFFER_HEIGHT, 8, None};
    int count = 0;
    GLXFBConfig* const configs = glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
    if (count == 0) return 2;
    const GLXPbuffer pbuffer = glXCreatePbuffer(display, configs[0], size);
    GLXContext const context =
        glXCreateNewContext(display, configs[0], GLX_RGBA_TYPE, nullptr, True);
    if (glXMakeContextCurrent(display, pbuffer, pbuffer, context) == 0) return 2;

    kyglSetContext(7);
    KyShader::mFolderPath = argv[1];
    KyShaderProgram program;
    program.create("terrain.vert", "terrain.frag", "gallery");
    program.apply(7);
    int inUse = 0;
    glGetIntegerv(0x8B8D /* GL_CURRENT_PROGRAM */, &inUse);
    std::printf("%s\n", inUse != 0 && program.isApplied() ? "in use" : "not built");
    program.deleteProgram();
    KyDeferredDeleteMap::deferredDelete(7);
    return 0;
}
