/// Plain GLX on two threads: each has a GL context of its own, and both draw with the same pair of
/// shader files. With --broken the fragment shader is one that no driver takes.
///
///     two_threads [--broken] PICTURE.png
#include "common/GlxBuffer.h"
#include "common/Picture.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kygl.h>
#include <kygl/KyShader.h>
#include <kygl/KyShaderBuild.h>
#include <kygl/KyShaderProgram.h>

#include <atomic>
#include <cstdio>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>

namespace {

constexpr int kSize = 256;

// Mesa's software driver breaks the heap when two threads make or destroy contexts at once.
std::mutex sOneByOne;

std::atomic<int> sBuilds{0};       // by both threads
thread_local std::string sWhyNot;  // of the last build on this thread that failed

/// A GL context with a buffer to draw to, on an X connection of its own: no other thread uses that,
/// so drawing needs no lock. Current on the thread that makes it, until it is destroyed there.
class Surface {
public:
    explicit Surface(unsigned int id) : mId(id) {
        const std::lock_guard<std::mutex> hold(sOneByOne);
        mBuffer = std::make_unique<GlxBuffer>(kSize);
    }

    // The last chance to delete what died while the context lived. It has to be current for that.
    ~Surface() {
        KyDeferredDeleteMap::deferredDelete(mId);
        const std::lock_guard<std::mutex> hold(sOneByOne);
        mBuffer.reset();
    }
    Surface(const Surface&) = delete;
    Surface& operator=(const Surface&) = delete;

private:
    unsigned int mId;
    std::unique_ptr<GlxBuffer> mBuffer;
};

// The library calls this on the thread that builds: on both at once if need be.
void watch(const KyShaderBuild& build, void* /*user*/) {
    ++sBuilds;
    if (build.result.failed()) sWhyNot = build.messages[0].line;
}

// A thread of its own runs this from beginning to end. A program is for one thread, so each has
// one; it dies ahead of the surface, which deletes its GL objects.
void draw(unsigned int context, const char* fragmentFile, const char* macro, Picture* picture) {
    const Surface surface(context);
    kyglSetContext(context);  // for this thread; the first time, the context has to be current
    if (!kyglGLSLAvailable(context)) throw std::runtime_error("this OpenGL has no GLSL");
    KyShaderProgram program;
    program.create("waves.vert", fragmentFile, "examples");
    program.pushMacro(macro);
    if (!program.compile(context)) throw std::runtime_error(sWhyNot);
    program.apply(context);
    glRectf(-1, -1, 1, 1);
    program.unUse();
    picture->grab(context == 1 ? 0 : kSize, kSize);
}

void run(const char* fragmentFile, const char* file) {
    KyShader::mFolderPath = EXAMPLES_ROOT;  // before any thread builds
    KyShaderBuild::setObserver(watch);
    Picture picture(2 * kSize, kSize);
    const auto launch = std::launch::async;
    auto left = std::async(launch, draw, 1U, fragmentFile, "RINGS", &picture);
    auto right = std::async(launch, draw, 2U, fragmentFile, "STRIPES", &picture);
    left.get();
    right.get();
    kyglClearAllContexts();  // no thread has one any more
    picture.writePng(file);
    std::printf("%d builds, %ld GL objects left\n", sBuilds.load(),
                KyDeferredDeleteMap::pending().total());
}

}  // namespace

int main(int argc, char** argv) try {
    const bool broken = argc == 3 && std::string(argv[1]) == "--broken";
    if (argc != 2 && !broken) throw std::runtime_error("usage: two_threads [--broken] PICTURE.png");
    run(broken ? "broken.frag" : "waves.frag", argv[argc - 1]);
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "two_threads: %s\n", e.what());
    return 1;
}
