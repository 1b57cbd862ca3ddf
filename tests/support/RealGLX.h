#pragma once

#include <gtest/gtest.h>

#include <memory>

/// A GLX context of the system's driver, which shares no objects with others, and a pbuffer, 64
/// pixels square, to draw to. Brings in no X11 header: their macros break others.
class RealGLX {
public:
    static bool available();  ///< whether there is an X display that can do GLX
    static bool masked();     ///< whether this run hides extensions of the driver
    static void expectRenderer();

    /// Current on the calling thread; on a neighbour's connection, or on one of its own.
    explicit RealGLX(const RealGLX* neighbour = nullptr);
    ~RealGLX();

    void makeCurrent() const;
    void release() const;  ///< none is current on the thread afterwards
    void* context() const { return mContext; }

private:
    std::shared_ptr<struct _XDisplay> mDisplay;
    unsigned long mPbuffer;
    struct __GLXcontextRec* mContext;
};

/// Skips its tests where there is no display. KYGL_TEST_RENDERER in the environment names the
/// driver that they are to run on.
struct RealGLXTest : testing::Test {
    void SetUp() override {
        if (!RealGLX::available()) GTEST_SKIP() << "no X display with GLX";
        gl = std::make_unique<RealGLX>();
        RealGLX::expectRenderer();
    }
    std::unique_ptr<RealGLX> gl;  ///< current when a test begins
};
