#include "GlxSurface.h"

#include <cstdlib>
#include <initializer_list>
#include <mutex>
#include <stdexcept>

#include <GL/glx.h>
#include <X11/keysym.h>
#include <X11/Xutil.h>

namespace {

// Xlib calls its handler on the thread that reads the answer: the owner of the connection.
thread_local std::string sError;

// Mesa's software driver breaks the heap when two threads make or take down contexts and
// connections at the same time.
std::mutex sOneByOne;

int noteError(Display* display, XErrorEvent* event) {
    char text[128];
    XGetErrorText(display, event->error_code, text, sizeof text);
    if (sError.empty()) sError = text;
    return 0;
}

}  // namespace

Display* openDisplay() {
    const char* const name = std::getenv("DISPLAY");
    if (name == nullptr || *name == '\0')
        throw std::runtime_error("no X display: DISPLAY is not set");
    Display* const display = XOpenDisplay(nullptr);
    if (display == nullptr)
        throw std::runtime_error(std::string("no X display: cannot connect to '") + name + "'");
    return display;
}

void GlxSurface::Closer::operator()(Display* display) const {
    XCloseDisplay(display);
}

void GlxSurface::prepareThreads() {
    XInitThreads();
    XSetErrorHandler(noteError);
}

GlxSurface::GlxSurface(bool window, const std::string& title, int x, int width, int height)
    : GlxSurface(window, width, height) {
    const std::lock_guard<std::mutex> hold(sOneByOne);
    open();
    const GLXFBConfig config = chooseConfig();
    mContext = glXCreateNewContext(mDisplay.get(), config, GLX_RGBA_TYPE, nullptr, True);
    checkErrors();
    if (mContext == nullptr) throw std::runtime_error("the X server gives no OpenGL context");
    if (window)
        makeWindow(config, title, x);
    else
        makeBuffer(config);
    checkErrors();
    if (glXMakeContextCurrent(mDisplay.get(), mDrawable, mDrawable, mContext) == False)
        throw std::runtime_error("the OpenGL context cannot be made current");
}

GlxSurface::~GlxSurface() {
    const std::lock_guard<std::mutex> hold(sOneByOne);
    if (mContext != nullptr) {
        glXMakeContextCurrent(mDisplay.get(), None, None, nullptr);
        if (mDrawable != 0)
            (mWindow ? glXDestroyWindow : glXDestroyPbuffer)(mDisplay.get(), mDrawable);
        glXDestroyContext(mDisplay.get(), mContext);
    }
    mDisplay.reset();
}

void GlxSurface::open() {
    mDisplay.reset(openDisplay());
    int major = 0;
    int minor = 0;
    const std::string name = DisplayString(mDisplay.get());
    if (glXQueryExtension(mDisplay.get(), nullptr, nullptr) == False ||
        glXQueryVersion(mDisplay.get(), &major, &minor) == False || (major == 1 && minor < 3))
        throw std::runtime_error("the X display '" + name + "' has no GLX 1.3");
}

// A window gets four samples in a pixel where the driver has that.
GLXFBConfig GlxSurface::chooseConfig() const {
    for (const int samples : {mWindow ? 4 : 0, 0}) {
        const int wanted[] = {GLX_DRAWABLE_TYPE,
                              mWindow ? GLX_WINDOW_BIT : GLX_PBUFFER_BIT,
                              GLX_DOUBLEBUFFER,
                              mWindow ? True : False,
                              GLX_RED_SIZE,
                              8,
                              GLX_GREEN_SIZE,
                              8,
                              GLX_BLUE_SIZE,
                              8,
                              GLX_DEPTH_SIZE,
                              24,
                              GLX_SAMPLES,
                              samples,
                              None};
        int count = 0;
        GLXFBConfig* const configs =
            glXChooseFBConfig(mDisplay.get(), DefaultScreen(mDisplay.get()), wanted, &count);
        if (configs == nullptr) continue;
        const GLXFBConfig first = count > 0 ? configs[0] : nullptr;
        XFree(configs);
        if (first != nullptr) return first;
    }
    throw std::runtime_error("GLX offers no buffer with colour and depth");
}

void GlxSurface::makeWindow(GLXFBConfig config, const std::string& title, int x) {
    Display* const display = mDisplay.get();
    XVisualInfo* const visual = glXGetVisualFromFBConfig(display, config);
    if (visual == nullptr) throw std::runtime_error("GLX offers no visual for a window");
    const Window root = RootWindow(display, visual->screen);
    XSetWindowAttributes attributes = {};
    attributes.colormap = XCreateColormap(display, root, visual->visual, AllocNone);
    attributes.event_mask = KeyPressMask | StructureNotifyMask;
    const Window window =
        XCreateWindow(display, root, x, 0, static_cast<unsigned int>(mWidth),
                      static_cast<unsigned int>(mHeight), 0, visual->depth, InputOutput,
                      visual->visual, CWColormap | CWEventMask | CWBorderPixel, &attributes);
    XFree(visual);
    mClose = XInternAtom(display, "WM_DELETE_WINDOW", False);
    XSetWMProtocols(display, window, &mClose, 1);
    XStoreName(display, window, title.c_str());
    XMapWindow(display, window);
    mDrawable = glXCreateWindow(display, config, window, nullptr);
}

void GlxSurface::makeBuffer(GLXFBConfig config) {
    const int size[] = {GLX_PBUFFER_WIDTH, mWidth, GLX_PBUFFER_HEIGHT, mHeight, None};
    mDrawable = glXCreatePbuffer(mDisplay.get(), config, size);
}

void GlxSurface::show() {
    if (mWindow) glXSwapBuffers(mDisplay.get(), mDrawable);
    checkErrors();
}

bool GlxSurface::wantsToEnd() {
    bool end = false;
    while (XPending(mDisplay.get()) > 0) {
        XEvent event;
        XNextEvent(mDisplay.get(), &event);
        if (event.type == KeyPress) {
            const KeySym key = XLookupKeysym(&event.xkey, 0);
            end = end || key == XK_q || key == XK_Escape;
        } else if (event.type == ConfigureNotify) {
            mWidth = event.xconfigure.width;
            mHeight = event.xconfigure.height;
        } else if (event.type == ClientMessage) {
            end = end || static_cast<Atom>(event.xclient.data.l[0]) == mClose;
        }
    }
    return end;
}

void GlxSurface::checkErrors() {
    XSync(mDisplay.get(), False);
    if (!sError.empty()) throw std::runtime_error("the X server reports: " + sError);
}
