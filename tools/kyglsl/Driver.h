#pragma once

#include <kylib/KyString.h>

#include <memory>
#include <string>

struct _XDisplay;
struct __GLXcontextRec;

/// The GL driver, in an off-screen context of its own, current on the thread that made it.
class Driver {
public:
    /// Throws `UsageError` where there is no display, or none with GLSL.
    Driver();
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    struct Step {
        bool good = false;
        std::string log;
    };
    struct Build {
        Step vertex;
        Step fragment;
        Step link;  // not tried unless both others are good
        bool good() const { return link.good; }
    };

    /// By the same GL calls as the library, which keeps the logs to itself. Nothing stays in the
    /// GL.
    Build build(const KyString& vertexText, const KyString& fragmentText);

private:
    void open();
    void makeCurrent();

    struct Closer {
        void operator()(_XDisplay* display) const;
    };
    std::unique_ptr<_XDisplay, Closer> mDisplay;
    __GLXcontextRec* mContext = nullptr;
    unsigned long mBuffer = 0;
};
