#include <sogl/SoGLContext.h>

#include <sogl/SoGLEW.h>

#include <GL/glx.h>
// Xlibint.h, not Xlib.h, declares the hook that tells of a closed display; it also defines macros
// named min and max.
#include <X11/Xlibint.h>
#undef max
#undef min

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

extern "C" GLXContextID glXGetContextIDEXT(GLXContext context);

// The contexts seen so far, by address.
//
// GLX says nothing when a context is destroyed, and the next one often gets the same address. What
// tells them apart is the context's XID: Xlib hands out every id of a connection once. A second
// connection may start over with the same ids, so a display's contexts are forgotten when it is
// closed.
class SoGLContextTable {
public:
    static SoGLContextTable& instance() {
        // Never destroyed: threads may still ask while the process ends.
        static auto* const table = new SoGLContextTable;
        return *table;
    }

    SoGLContext* getCurrent() {
        const GLXContext address = glXGetCurrentContext();
        if (address == nullptr) return nullptr;
        Display* const display = glXGetCurrentDisplay();
        const GLXContextID id = glXGetContextIDEXT(address);
        const unsigned long epoch = mEpoch.load(std::memory_order_acquire);
        // In the static block of the thread: one that is made at its first use ends the process
        // where there is no memory for it.
        [[gnu::tls_model("initial-exec")]] thread_local LastSeen last;
        // An id of 0 tells nothing, so such a context is read again each time.
        if (id == 0 || address != last.address || display != last.display || id != last.id ||
            epoch != last.epoch)
            last = {address, display, id, epoch, find(address, display, id)};
        return last.context;
    }

private:
    struct LastSeen {
        GLXContext address = nullptr;
        Display* display = nullptr;
        GLXContextID id = 0;
        unsigned long epoch = 0;
        SoGLContext* context = nullptr;
    };
    struct Known {
        GLXContextID id = 0;
        Display* display = nullptr;
        std::unique_ptr<SoGLContext> context;
    };

    // The driver is asked with the lock held: nothing that it runs comes back here.
    SoGLContext* find(GLXContext address, Display* display, GLXContextID id) {
        const std::lock_guard<std::mutex> hold(mMutex);
        watch(display);
        Known& known = mContexts[address];
        if (known.context == nullptr || id == 0 || known.id != id || known.display != display) {
            if (known.context == nullptr || known.id != id || known.display != display)
                known.context.reset(new SoGLContext);
            known.id = id;
            known.display = display;
            SoGLEW::glewContextInit(known.context->glewGetContext());
        }
        return known.context.get();
    }

    // The hook lives as long as the display, which releases it when it has called it.
    void watch(Display* display) {
        if (display == nullptr || mDisplays.count(display) != 0) return;
        XExtCodes* const codes = XAddExtension(display);
        if (codes == nullptr) return;
        XESetCloseDisplay(display, codes->extension, [](Display* closed, XExtCodes*) {
            instance().forget(closed);
            return 0;
        });
        mDisplays[display] = codes->extension;
    }

    void forget(Display* display) {
        const std::lock_guard<std::mutex> hold(mMutex);
        for (auto it = mContexts.begin(); it != mContexts.end();)
            it = it->second.display == display ? mContexts.erase(it) : std::next(it);
        mDisplays.erase(display);
        mEpoch.fetch_add(1, std::memory_order_release);
    }

    std::mutex mMutex;
    std::map<GLXContext, Known> mContexts;
    std::map<Display*, int> mDisplays;
    std::atomic<unsigned long> mEpoch{0};  // counts closed displays
};

SoGLContext* SoGLContext::getCurrent(bool) {
    return SoGLContextTable::instance().getCurrent();
}
