/// Two GLFW windows, each with a GL context of its own, and one program for both. They stay until
/// one is closed; with a file to write, for a single frame.
///
///     glfw_windows [PICTURE.png]
#include "common/Picture.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderBuild.h>
#include <kygl/KyShaderProgram.h>

#include <GLFW/glfw3.h>

#include <cstdio>
#include <stdexcept>

namespace {

constexpr int kSize = 256;

void watch(const KyShaderBuild& build, void* /*user*/) {
    for (long i = 0; build.result.failed() && i < build.messageCount; ++i)
        std::fprintf(stderr, "glfw_windows: %s\n", build.messages[i].line);
}

void start() {
    KyShader::mFolderPath = EXAMPLES_ROOT;
    KyShaderBuild::setObserver(watch);
    glfwSetErrorCallback(
        [](int, const char* text) { std::fprintf(stderr, "glfw_windows: %s\n", text); });
#ifdef GLFW_PLATFORM_X11  // 3.4 may choose Wayland, which has no GLX
    glfwInitHint(GLFW_PLATFORM, GLFW_PLATFORM_X11);
#endif
    if (glfwInit() == GLFW_FALSE) throw std::runtime_error("no X display");
}

/// A window, and the id under which the library knows its context.
class View {
public:
    // GLFW's own choice of version can do all that the library does. The last argument is null: the
    // contexts share nothing, and need not.
    View(unsigned int id, const char* title, int x)
        : mId(id), mWindow(glfwCreateWindow(kSize, kSize, title, nullptr, nullptr)) {
        if (mWindow == nullptr) throw std::runtime_error("no window with an OpenGL context");
        glfwSetWindowPos(mWindow, x, 0);
        makeCurrent();
        if (!kyglGLSLAvailable(mId)) throw std::runtime_error("this OpenGL has no GLSL");
    }
    ~View() {
        makeCurrent();
        KyDeferredDeleteMap::deferredDelete(mId);
        glfwDestroyWindow(mWindow);
    }
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    // One thread draws into both windows, so it says each time which context is current: to the GL
    // and to the library.
    void makeCurrent() const {
        glfwMakeContextCurrent(mWindow);
        kyglSetContext(mId);
    }

    // @param picture null, or where the frame goes
    void draw(KyShaderProgram& program, const KyString& macro, Picture* picture) const {
        makeCurrent();
        int width = 0;
        int height = 0;
        glfwGetFramebufferSize(mWindow, &width, &height);
        glViewport(0, 0, width, height);
        program.pushMacro(macro);  // built once for each macro set and context, then found
        if (!program.compile(mId)) throw std::runtime_error("the shaders do not build");
        program.apply(mId);
        glRectf(-1, -1, 1, 1);
        program.unUse();
        program.removeMacro(macro);
        if (picture != nullptr) picture->grab(mId == 1 ? 0 : kSize, kSize);
        glfwSwapBuffers(mWindow);
    }

    bool isOpen() const { return glfwWindowShouldClose(mWindow) == GLFW_FALSE; }

private:
    unsigned int mId;
    GLFWwindow* mWindow;
};

// @param file null, or where the first frame goes
void show(const char* file) {
    const View left(1, "rings", 0);
    const View right(2, "stripes", kSize);
    KyShaderProgram program;  // dies first; each window then deletes what was built for it
    program.create("waves.vert", "waves.frag", "examples");
    const KyString rings("RINGS");  // made once: each call with a literal would allocate
    const KyString stripes("STRIPES");
    const KyString phase("phase");
    Picture picture(2 * kSize, kSize);
    Picture* const wanted = file != nullptr ? &picture : nullptr;
    do {
        program.setUniform(phase, file != nullptr ? 0.5F : static_cast<float>(glfwGetTime()));
        left.draw(program, rings, wanted);
        right.draw(program, stripes, wanted);
        glfwWaitEventsTimeout(0.01);
    } while (file == nullptr && left.isOpen() && right.isOpen());
    if (file != nullptr) picture.writePng(file);
}

}  // namespace

int main(int argc, char** argv) try {
    start();
    show(argc > 1 ? argv[1] : nullptr);
    glfwTerminate();
    kyglClearAllContexts();  // an id cannot be cleared alone while it is the thread's current one
    std::printf("%ld GL objects left\n", KyDeferredDeleteMap::pending().total());
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "glfw_windows: %s\n", e.what());
    return 1;
}
