#include "RealGLX.h"

#include <GL/glx.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <thread>

namespace {

// A server that has lost its last client starts over and refuses connections meanwhile.
std::shared_ptr<Display> openDisplay() {
    Display* display = XOpenDisplay(nullptr);
    for (int i = 0; display == nullptr && i < 10 && std::getenv("DISPLAY") != nullptr; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        display = XOpenDisplay(nullptr);
    }
    if (display == nullptr) return nullptr;
    return {display, XCloseDisplay};
}

GLXFBConfig chooseConfig(Display* display) {
    const int wanted[] = {
        GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT, GLX_RED_SIZE, 8, GLX_DEPTH_SIZE, 16, None};
    int count = 0;
    GLXFBConfig* const list = glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
    const GLXFBConfig first = count > 0 ? list[0] : nullptr;
    if (list != nullptr) XFree(list);
    return first;
}

}  // namespace

// The connection stays open, so that the server has a client throughout.
bool RealGLX::available() {
    static auto* const display = new std::shared_ptr<Display>(openDisplay());
    return *display != nullptr && chooseConfig(display->get()) != nullptr;
}

bool RealGLX::masked() {
    return std::getenv("MESA_EXTENSION_OVERRIDE") != nullptr;
}

void RealGLX::expectRenderer() {
    const char* const wanted = std::getenv("KYGL_TEST_RENDERER");
    const auto* const renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    ASSERT_TRUE(wanted == nullptr ||
                (renderer != nullptr && std::strstr(renderer, wanted) != nullptr))
        << renderer;
}

RealGLX::RealGLX(const RealGLX* neighbour)
    : mDisplay(neighbour != nullptr ? neighbour->mDisplay : openDisplay()) {
    const GLXFBConfig config = chooseConfig(mDisplay.get());
    const int size[] = {GLX_PBUFFER_WIDTH, 64, GLX_PBUFFER_HEIGHT, 64, None};
    mPbuffer = glXCreatePbuffer(mDisplay.get(), config, size);
    mContext = glXCreateNewContext(mDisplay.get(), config, GLX_RGBA_TYPE, nullptr, True);
    makeCurrent();
}

// Mesa's software driver breaks the heap when two threads take down contexts and displays at once.
RealGLX::~RealGLX() {
    static std::mutex oneByOne;
    const std::lock_guard<std::mutex> lock(oneByOne);
    if (glXGetCurrentContext() == mContext) release();
    glXDestroyContext(mDisplay.get(), mContext);
    glXDestroyPbuffer(mDisplay.get(), mPbuffer);
    mDisplay.reset();
}

void RealGLX::makeCurrent() const {
    EXPECT_TRUE(glXMakeContextCurrent(mDisplay.get(), mPbuffer, mPbuffer, mContext));
}

void RealGLX::release() const {
    glXMakeContextCurrent(mDisplay.get(), None, None, nullptr);
}
