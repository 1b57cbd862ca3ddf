#pragma once

#include <sogl/SoError.h>
#include <sogl/soglApi.h>
#include <sogl/SoGLFlags.h>

/// What the toolkit knows of one GL context: its capability flags.
///
/// The toolkit makes no contexts. `getCurrent` answers for whatever GLX context is current on the
/// calling thread, however it was made current, and reads the flags the first time that it sees
/// that context. The object belongs to the toolkit and stays valid until its GL context is
/// destroyed and another one takes its address, or its display is closed.
class SOGL_API SoGLContext {
public:
    SoGLContext(const SoGLContext&) = delete;
    SoGLContext& operator=(const SoGLContext&) = delete;

    /// The context current on the calling thread, or null. Takes no lock and makes no GL call when
    /// the thread asked for the same context last. The flag is false at all calls and has no
    /// effect.
    static SoGLContext* getCurrent(bool flag);

    /// The flags of this context.
    GLEWContextStruct* glewGetContext() { return &mFlags; }

    /// The flags of the current context, or null without one.
    /// @param report whether to post an error when there is none
    static GLEWContextStruct* glewGetCurrentContextIV(bool report) {
        if (SoGLContext* const context = getCurrent(false)) return context->glewGetContext();
        if (report) SoError::post("SoGLContext : Trying to access a NULL context");
        return nullptr;
    }

private:
    friend class SoGLContextTable;
    SoGLContext() = default;

    GLEWContextStruct mFlags = {};
};
