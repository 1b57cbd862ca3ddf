#pragma once

#include <GL/glx.h>

#include <memory>

/// A GLX context that shares no objects with others, and a square off-screen buffer to draw to, on
/// an X connection of their own. For one thread; `two_threads` shows what two have to heed.
class GlxBuffer {
public:
    /// Current on the calling thread when it is made. Throws `std::runtime_error`.
    explicit GlxBuffer(int size);
    ~GlxBuffer();
    GlxBuffer(const GlxBuffer&) = delete;
    GlxBuffer& operator=(const GlxBuffer&) = delete;

    /// Throws `std::runtime_error`.
    void makeCurrent() const;

private:
    std::unique_ptr<Display, decltype(&XCloseDisplay)> mDisplay;
    GLXPbuffer mBuffer = None;
    GLXContext mContext = nullptr;
};
