#pragma once

#include <kygl/kyglApi.h>
#include <kylib/KyResult.h>
#include <sogl/SoGLFlags.h>

/// @file
/// Context registry and GL error check.
///
/// The application gives each of its GL contexts an id of its own choosing; every other part of
/// the library takes that id as the key of what it keeps per context. The registry keeps one
/// record of capability flags for each id, captured once, and remembers for each thread which
/// record is current, so capability questions touch no GL and any thread may ask them.
///
///     glXMakeContextCurrent(display, window, window, context);   // the application's own
///     kyglSetContext(7);                                         // first call: captures the flags
///     if (kyglGLSLAvailable(7)) ...                              // from any thread, any time
///
/// Every function may be called from any thread. The registry's lock is held while the table is
/// looked at and while `kyglSetContext` captures a record, and released on every way out. A capture
/// asks the GL for its version and extensions and may ask the X server. Nothing here reports an
/// error; a failed allocation leaves as `std::bad_alloc`, also at a thread's first call, and the
/// registry and the thread's context as they were.

/// The capability flags of one GL context.
struct KyGLContext_s {
    GLEWContextStruct gl;             ///< flags of the GL
    SoGLXEW::GLXEWContextStruct glx;  ///< flags of GLX
};

/// What `kyglGetContext` gives on a thread without a registered context. Register no context
/// under it.
constexpr unsigned int KYGL_NO_CONTEXT = 0xFFFFFFFFU;

extern "C" {

/// Makes `id` the calling thread's current context. The first call for an id registers it and
/// captures the capabilities of the GL context current on this thread, which must be the one that
/// the id names; later calls only switch the thread and need no GL context.
KYGL_API void kyglSetContext(unsigned int id);

/// The id of the calling thread's current context, or 0xFFFFFFFF. Asked again, it answers without
/// the lock until a context comes, goes or becomes current; otherwise linear in the number of ids.
/// A thread without a record gets one of its own, captured from the GL context that is current or
/// empty without one; it is in no table and released when the thread ends, unless the library is
/// unloaded before.
KYGL_API unsigned int kyglGetContext();

/// Captures the capabilities of the calling thread's current record again, from the GL context
/// that is current now. Takes no lock: no other thread may use the record meanwhile. Capability
/// questions about its id do, and those about all contexts use every record. Flags that the driver
/// does not answer keep their value.
KYGL_API void kyglInitContext();

/// Forgets `id` and releases its record, unless it is the calling thread's current one: then
/// nothing happens. The caller sees to it that no other thread has it as its current one. A
/// thread without a record gets one first, as from `kyglGetContext`. Names that wait for deletion
/// under this id stay queued.
KYGL_API void kyglClearContext(unsigned int id);

/// Forgets every id and releases every record, that of the calling thread too. No other thread may
/// have a current context.
KYGL_API void kyglClearAllContexts();

/// Whether the context can do vertex buffer objects, from its captured flags: one hash lookup
/// under the registry's lock and no GL call. False for an id that was never set; such a question
/// makes the id known without a record until `kyglSetContext` or `kyglClearContext`, and the
/// all-contexts questions are false that long.
KYGL_API bool kyglVBOsAvailable(unsigned int id);

/// Whether the context can do GLSL; otherwise as `kyglVBOsAvailable`.
KYGL_API bool kyglGLSLAvailable(unsigned int id);

/// Whether every known id can do vertex buffer objects; true when no id is known.
KYGL_API bool kyglVBOsAvailableAllContexts();

/// Whether every known id can do GLSL; true when no id is known.
KYGL_API bool kyglGLSLAvailableAllContexts();

/// Whether the vendor string of the GL context current on the calling thread contains "NVIDIA".
/// Asks `glGetString` each time; false without a context.
KYGL_API bool kyglIsVendorNVIDIA();

/// The same for "ATI", anywhere in the string: a vendor named "CORPORATION" counts too.
KYGL_API bool kyglIsVendorATI();

}  // extern "C"

/// Whether the record has all four flags that GLSL takes. @param context may be null: false
KYGL_API bool checkGLSL(KyGLContext_s* context);

/// Whether the record has vertex buffer objects. @param context may be null: false
KYGL_API bool checkVBOs(KyGLContext_s* context);

/// Reads the GL's error flags and turns the first into a result that names the failed command.
/// Call it right after the GL call, on the same thread.
///
/// @param command the GL call as written in the source; "" after a group of calls
/// @param file path of the source, without extension
/// @param line line of the call
/// @param mode what to do with a failure: 1 notifies, 2 checks, any other value only returns it
/// @return success, or a failure with the GL error as code, the place, an empty message and the
///     detail "command=[...]"
///
/// GL calls: one `glGetError` when nothing is wrong, and then no allocation; otherwise up to ten
/// more, whose values are dropped, so that old errors do not turn up at the next check.
KYGL_API KyResult kyglErrorCheck(const char* command, const char* file, unsigned int line,
                                 int mode);
