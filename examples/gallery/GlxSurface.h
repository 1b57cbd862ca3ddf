#pragma once

#include <memory>
#include <string>

// X11's headers would put macros such as `Success` into whoever includes this one.
struct _XDisplay;
struct __GLXcontextRec;
struct __GLXFBConfigRec;

/// A connection to the X server. Throws `std::runtime_error` when there is none.
_XDisplay* openDisplay();

/// A GLX context of its own on an X connection of its own, current on the thread that made it:
/// with a window, or with an off-screen buffer. Throws `std::runtime_error` when there is none.
class GlxSurface {
public:
    /// To be called once, before the first thread starts.
    static void prepareThreads();

    /// @param title,x of the window
    GlxSurface(bool window, const std::string& title, int x, int width, int height);
    ~GlxSurface();
    GlxSurface(const GlxSurface&) = delete;
    GlxSurface& operator=(const GlxSurface&) = delete;

    /// Shows what was drawn, and throws if the X server reported an error.
    void show();

    /// Whether the user closed the window or pressed q or Escape in it.
    bool wantsToEnd();

    int width() const { return mWidth; }
    int height() const { return mHeight; }

private:
    GlxSurface(bool window, int width, int height)
        : mWindow(window), mWidth(width), mHeight(height) {}
    void open();
    __GLXFBConfigRec* chooseConfig() const;
    void makeWindow(__GLXFBConfigRec* config, const std::string& title, int x);
    void makeBuffer(__GLXFBConfigRec* config);
    void checkErrors();

    struct Closer {
        void operator()(_XDisplay* display) const;
    };
    std::unique_ptr<_XDisplay, Closer> mDisplay;  // closing it frees what the server holds for us
    __GLXcontextRec* mContext = nullptr;
    unsigned long mDrawable = 0;
    unsigned long mClose = 0;
    bool mWindow;
    int mWidth;
    int mHeight;
};
