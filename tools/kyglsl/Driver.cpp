#include "Driver.h"

#include "UsageError.h"

#include <kygl/kyglShaderGLSL.h>
#include <sogl/SoGLEW.h>

#include <GL/glx.h>

#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

bool sFailed = false;

int noteError(Display* /*display*/, XErrorEvent* /*event*/) {
    sFailed = true;
    return 0;
}

[[noreturn]] int endWithoutServer(Display* /*display*/) {
    std::fputs("kyglsl: the X server is gone\n", stderr);
    _exit(2);
}

// A shader that a driver finds in its cache on disk is not compiled, and its warnings are not told.
void turnOffShaderCaches() {
    setenv("MESA_SHADER_CACHE_DISABLE", "true", 1);
    setenv("MESA_GLSL_CACHE_DISABLE", "true", 1);
    setenv("__GL_SHADER_DISK_CACHE", "0", 1);
}

/// A GL object that is deleted in the end.
struct GlObject {
    explicit GlObject(GLhandleARB object) : name(object) {}
    ~GlObject() {
        if (name != 0) glDeleteObjectARB(name);
    }
    GlObject(const GlObject&) = delete;
    GlObject& operator=(const GlObject&) = delete;
    const GLhandleARB name;
};

Driver::Step outcome(GLhandleARB object, GLenum status) {
    GLint good = 0;
    GLint length = 0;
    glGetObjectParameterivARB(object, status, &good);
    glGetObjectParameterivARB(object, GL_OBJECT_INFO_LOG_LENGTH_ARB, &length);
    std::string log(static_cast<std::size_t>(length > 0 ? length : 0) + 1, '\0');
    glGetInfoLogARB(object, length, nullptr, log.data());
    log.resize(std::strlen(log.data()));
    return {good != 0, log};
}

Driver::Step compile(const GlObject& shader, const KyString& text) {
    const char* source = text.dataPtr();
    glShaderSourceARB(shader.name, 1, &source, nullptr);
    glCompileShaderARB(shader.name);
    return outcome(shader.name, GL_OBJECT_COMPILE_STATUS_ARB);
}

}  // namespace

void Driver::Closer::operator()(_XDisplay* display) const {
    XCloseDisplay(display);
}

Driver::Driver() {
    turnOffShaderCaches();
    open();
    makeCurrent();
    if (!kyglShaderGLSLAvailable()) throw UsageError("this OpenGL has no GLSL");
}

void Driver::open() {
    const char* const name = std::getenv("DISPLAY");
    if (name == nullptr || *name == '\0') throw NoDisplay("no X display: DISPLAY is not set");
    XSetErrorHandler(noteError);
    XSetIOErrorHandler(endWithoutServer);
    mDisplay.reset(XOpenDisplay(nullptr));
    if (mDisplay == nullptr)
        throw NoDisplay(std::string("no X display: cannot connect to '") + name + "'");
}

void Driver::makeCurrent() {
    Display* const display = mDisplay.get();
    if (glXQueryExtension(display, nullptr, nullptr) == False)
        throw UsageError("the X display has no GLX");
    const int wanted[] = {GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT, None};
    const int size[] = {GLX_PBUFFER_WIDTH, 16, GLX_PBUFFER_HEIGHT, 16, None};
    int count = 0;
    GLXFBConfig* const configs = glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
    if (configs != nullptr && count > 0) {
        mBuffer = glXCreatePbuffer(display, configs[0], size);
        mContext = glXCreateNewContext(display, configs[0], GLX_RGBA_TYPE, nullptr, True);
        XSync(display, False);
    }
    XFree(configs);
    if (mContext == nullptr || sFailed ||
        glXMakeContextCurrent(display, mBuffer, mBuffer, mContext) == False)
        throw UsageError("the X display gives no OpenGL context");
}

Driver::~Driver() {
    glXMakeContextCurrent(mDisplay.get(), None, None, nullptr);
    glXDestroyPbuffer(mDisplay.get(), mBuffer);
    glXDestroyContext(mDisplay.get(), mContext);
}

Driver::Build Driver::build(const KyString& vertexText, const KyString& fragmentText) {
    Build build;
    const GlObject vertex(glCreateShaderObjectARB(GL_VERTEX_SHADER_ARB));
    const GlObject fragment(glCreateShaderObjectARB(GL_FRAGMENT_SHADER_ARB));
    build.vertex = compile(vertex, vertexText);
    build.fragment = compile(fragment, fragmentText);
    if (!build.vertex.good || !build.fragment.good) return build;
    const GlObject program(glCreateProgramObjectARB());
    glAttachObjectARB(program.name, vertex.name);
    glAttachObjectARB(program.name, fragment.name);
    glLinkProgramARB(program.name);
    build.link = outcome(program.name, GL_OBJECT_LINK_STATUS_ARB);
    return build;
}
