#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/kyglApi.h>
#include <kylib/KyMutex.h>

#include <atomic>

class KyQueueWatch;

/// GL objects that wait to be deleted in their own context.
///
/// A GL object can only be deleted while its context is current, but its owner may die at any
/// moment on any thread. So the owner leaves the GL name here with its context id, and the
/// application drains the queue whenever that context is current:
///
///     KyDeferredDeleteMap::pushTextureHandle(name, 7);   // any thread, any context or none
///     ...
///     KyDeferredDeleteMap::deferredDelete(7);            // with context 7 current
///
/// The library queues here and never drains. Names of a context that is never drained stay for
/// the life of the process. Where the GL context is gone and its objects with it, `discard` forgets
/// its names: another context under the same id would delete objects of its own by them. Shaders,
/// programs and textures that are still alive keep names of that context and queue them later, so
/// they are destroyed before.
///
/// Any thread may call. One lock guards the queue and is held through a drain, GL calls included:
/// a push from another thread waits, and nothing that a drain calls may push. No other lock is
/// taken meanwhile. When memory runs out a push throws `std::bad_alloc` and leaves the queue as it
/// was. A drain allocates only to word the result of a failed deletion; should that fail, the
/// exception passes, what was deleted is off the queue and all the rest is on it.
class KYGL_API KyDeferredDeleteMap {
public:
    /// The one instance of the process, built on first use and never destroyed. Any number of
    /// threads may make the first call at once.
    static KyDeferredDeleteMap* getMap();

    /// Queues one GL name. Makes no GL call and needs no context. The same name twice stays twice;
    /// 0 is queued like any other.
    /// @param handle GL name, of a shader, program, texture or buffer object
    /// @param context id of the context that it belongs to
    ///@{
    static void pushShaderHandle(unsigned int handle, unsigned int context);
    static void pushTehniqueHandle(unsigned int handle, unsigned int context);
    static void pushTextureHandle(unsigned int handle, unsigned int context);
    static void pushBufferHandle(unsigned int handle, unsigned int context);
    ///@}

    /// Deletes every queued object of `context`, which must be current on the calling thread:
    /// shaders, then programs, textures and buffers, within each kind the last queued first. Time
    /// is linear in the length of the queue.
    ///
    /// GL calls: for each object one of `glDeleteObjectARB`, `glDeleteProgram`,
    /// `glDeleteTextures` and `glDeleteBuffers`, and an error check. A GL error is dropped and the
    /// object forgotten all the same.
    static void deferredDelete(unsigned int context);

    /// Number of names that wait, by kind.
    struct Pending {
        long shaders = 0;   ///< shader objects
        long programs = 0;  ///< linked programs
        long textures = 0;  ///< textures
        long buffers = 0;   ///< buffers
        /// All of them.
        long total() const { return shaders + programs + textures + buffers; }
    };
    /// What waits for one context, and for all. Makes no GL call; linear in the queue for one.
    ///@{
    static Pending pending(unsigned int context);
    static Pending pending();
    ///@}

    /// Forgets every queued name of `context` and makes no GL call. For a context that was
    /// destroyed, before its id is given to another one and after the last object that used it.
    /// @return number of names forgotten
    static long discard(unsigned int context);

    /// The same operations on the instance.
    ///@{
    void pushShader(unsigned int handle, unsigned int context);
    void pushTehnique(unsigned int handle, unsigned int context);
    void pushTexture(unsigned int handle, unsigned int context);
    void pushBuffer(unsigned int handle, unsigned int context);
    void callDeferredDelete(unsigned int context);
    Pending countPending(unsigned int context);
    Pending countPending();
    long callDiscard(unsigned int context);
    ///@}

    /// One queued GL object.
    struct MapObject {
        unsigned int handle;   ///< the GL name
        unsigned int context;  ///< id of its context
    };

private:
    using Queue = KyDArray<MapObject>;

    KYGL_LOCAL KyDeferredDeleteMap() = default;
    KYGL_LOCAL void pushWatched(Queue KyDeferredDeleteMap::*list, const MapObject& object);

    KyDArray<MapObject> mShaderHandles KY_GUARDED_BY(mMutex);
    KyDArray<MapObject> mProgramHandles KY_GUARDED_BY(mMutex);
    KyDArray<MapObject> mTextureHandles KY_GUARDED_BY(mMutex);
    KyDArray<MapObject> mBufferHandles KY_GUARDED_BY(mMutex);
    KyMutex mMutex{false};
    KyQueueWatch* mWatch KY_GUARDED_BY(mMutex) = nullptr;  ///< owned; null until diagnostics are on

    KYGL_LOCAL static std::atomic<KyDeferredDeleteMap*> mDeferredMap;
};
