/// From an empty file to a picture: draws a disc with rings and writes first.ppm.
/// The argument is the folder that holds share/shaders, the present one without it.
//! [includes]
#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/KyDiagnostics.h>
#include <kygl/kygl.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderProgram.h>

#include <cstdio>
#include <vector>

#include <GL/glx.h>

constexpr int kSize = 256;
constexpr unsigned int kContext = 1;  // any number but KYGL_NO_CONTEXT
//! [includes]

//! [context]
// A GL context and a buffer to draw to, current on this thread.
bool makeContext(Display* display) {
    const int wanted[] = {GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT, GLX_RED_SIZE, 8, None};
    int count = 0;
    GLXFBConfig* const configs = glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
    if (configs == nullptr) return false;
    const int size[] = {GLX_PBUFFER_WIDTH, kSize, GLX_PBUFFER_HEIGHT, kSize, None};
    const GLXPbuffer buffer = glXCreatePbuffer(display, configs[0], size);
    GLXContext const context =
        glXCreateNewContext(display, configs[0], GLX_RGBA_TYPE, nullptr, True);
    XFree(configs);
    return context != nullptr && glXMakeContextCurrent(display, buffer, buffer, context) != False;
}

void endContext(Display* display) {
    GLXContext const context = glXGetCurrentContext();
    const GLXDrawable buffer = glXGetCurrentDrawable();
    glXMakeContextCurrent(display, None, None, nullptr);
    glXDestroyContext(display, context);
    glXDestroyPbuffer(display, buffer);
}
//! [context]

//! [draw]
bool draw() {
    kyglSetContext(kContext);  // the context that is current here is number 1 from now on
    if (!kyglGLSLAvailable(kContext)) return false;

    KyShaderProgram program;  // no file and no GL yet
    program.create("disc.vert", "disc.frag", "guide");
    program.pushMacro("RINGS 4");
    program.setUniform("radius", 0.8F);

    if (!program.compile(kContext)) return false;  // reads, compiles and links: the first time
    program.apply(kContext);                       // in use, with its uniforms
    glRectf(-1, -1, 1, 1);
    program.unUse();
    return true;
}
//! [draw]

//! [write]
bool write(const char* path) {
    std::vector<unsigned char> pixels(3UL * kSize * kSize);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, kSize, kSize, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    std::FILE* const file = std::fopen(path, "wb");
    if (file == nullptr) return false;
    std::fprintf(file, "P6 %d %d 255\n", kSize, kSize);
    std::fwrite(pixels.data(), 1, pixels.size(), file);
    return std::fclose(file) == 0;
}
//! [write]

//! [main]
int main(int argc, char** argv) {
    KyShader::mFolderPath = argc > 1 ? argv[1] : ".";  // holds share/shaders
    KyDiagnostics::enable();                           // the library is silent otherwise

    Display* const display = XOpenDisplay(nullptr);
    const bool hasContext = display != nullptr && makeContext(display);
    const bool good = hasContext && draw() && write("first.ppm");
    if (hasContext) {
        KyDeferredDeleteMap::deferredDelete(kContext);  // what the program left: it died in draw()
        endContext(display);
    }
    if (display != nullptr) XCloseDisplay(display);
    if (good) return 0;
    std::fputs(hasContext ? "first: no picture\n" : "first: no display with OpenGL\n", stderr);
    return 1;
}
//! [main]
