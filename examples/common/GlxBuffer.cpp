#include "GlxBuffer.h"

#include <stdexcept>

GlxBuffer::GlxBuffer(int size) : mDisplay(XOpenDisplay(nullptr), XCloseDisplay) {
    Display* const display = mDisplay.get();
    if (display == nullptr) throw std::runtime_error("no X display");
    const int wanted[] = {GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT, GLX_RED_SIZE, 8, None};
    int count = 0;
    const std::unique_ptr<GLXFBConfig, decltype(&XFree)> configs(
        glXChooseFBConfig(display, DefaultScreen(display), wanted, &count), XFree);
    if (count == 0) throw std::runtime_error("the X display has no GLX buffer to offer");
    const int attributes[] = {GLX_PBUFFER_WIDTH, size, GLX_PBUFFER_HEIGHT, size, None};
    mBuffer = glXCreatePbuffer(display, *configs, attributes);
    mContext = glXCreateNewContext(display, *configs, GLX_RGBA_TYPE, nullptr, True);
    if (mContext == nullptr) throw std::runtime_error("no GL context");
    makeCurrent();
}

GlxBuffer::~GlxBuffer() {
    if (glXGetCurrentContext() == mContext)
        glXMakeContextCurrent(mDisplay.get(), None, None, nullptr);
    glXDestroyContext(mDisplay.get(), mContext);
    glXDestroyPbuffer(mDisplay.get(), mBuffer);
}

void GlxBuffer::makeCurrent() const {
    if (glXMakeContextCurrent(mDisplay.get(), mBuffer, mBuffer, mContext) == False)
        throw std::runtime_error("the GL context cannot be made current");
}
