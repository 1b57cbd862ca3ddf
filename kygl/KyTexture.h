#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/kyglApi.h>

/// One logical 1D RGBA texture, for use in any number of GL contexts.
///
/// The object keeps the pixels in main memory and makes one GL texture for each context, the first
/// time that this context asks to bind it. When the pixels change, the GL textures of all contexts
/// go out of date at once: the next bind hands them to `KyDeferredDeleteMap`, each under its own
/// context, and every context gets a new one at its next bind.
///
///     KyTexture colours;
///     colours.create1D(rgba, 256);   // no GL; `rgba` is not needed afterwards
///     ...
///     colours.bindTexture(3);        // context 3 is current
///     glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);   // the caller's
///     ...
///     colours.destroy();             // before it dies: queues the GL textures
///
/// Filter and wrap modes are those of a fresh GL texture until the caller sets them, and enabling
/// the target is the caller's too. An object belongs to one thread at a time. The context id is
/// taken on trust, except by `KyDiagnostics`: the context that it names must be current. GL errors
/// change nothing in the course of an operation; that of an upload, such as a size that the driver
/// refuses, is notified once and the texture kept as it is until the pixels change.
class KYGL_API KyTexture {
public:
    KyTexture() = default;
    /// Releases the pixels. The GL textures stay in the GL, unqueued: call `destroy` first to have
    /// them deleted.
    ~KyTexture();
    KyTexture(const KyTexture&) = delete;
    KyTexture& operator=(const KyTexture&) = delete;

    /// Replaces the pixels by a copy and puts all GL textures out of date. No GL call.
    /// @param pixels 4 bytes per texel: red, green, blue, alpha
    /// @param size width in texels. 0 or less keeps the pixels that are there, with that width:
    ///     the next bind then asks the GL for a texture of it
    /// `std::bad_alloc` leaves the pixels and their width as they were.
    void create1D(const void* pixels, int size);

    /// The inner step of `create1D`: copies the pixels and nothing else, so the width is 0 after
    /// it. For `size` of 0 or less nothing happens.
    void createPixels(const void* pixels, int size);

    /// Releases the pixels.
    void deletePixels();

    /// Binds the texture of `context`, made now if need be.
    ///
    /// GL calls: `glBindTexture`; for a new texture `glGenTextures`, `glBindTexture` and
    /// `glTexImage1D` before it; an error check after each. In the steady state nothing is
    /// allocated and no lock taken. What is out of date is queued for deletion here; GL textures
    /// for which the queue has no memory stay in the GL until their context goes. When memory for
    /// the new texture runs out, `std::bad_alloc` passes, and the next call makes it.
    /// @return 1, or 0 without pixels; then nothing happens
    int bindTexture(unsigned int context);

    /// Queues the GL textures of all contexts for deletion. No GL call, no context needed.
    /// Without memory for the queue a GL texture stays until its context goes.
    void deleteTextures();

    /// `deletePixels`, then `deleteTextures`. The object can be filled again.
    void destroy();

    /// The GL texture of one context. It queues its name for deletion when it dies.
    class KYGL_API KyTextureBase {
    public:
        KyTextureBase() = default;
        ~KyTextureBase();
        KyTextureBase(const KyTextureBase&) = delete;
        KyTextureBase& operator=(const KyTextureBase&) = delete;

        /// Makes the GL texture, once: a second call does nothing.
        /// @param target the GL target
        /// @param pixels 4 bytes per texel, read during the call
        /// @param size width in texels
        /// @param context id of the context that is current
        void createRGBAbyte(unsigned int target, void* pixels, int size, unsigned int context);

        /// Binds it. Only after `createRGBAbyte`.
        void bindTexture();

    private:
        friend class KyTexture;

        unsigned int mId = 0xFFFFFFFFU;  ///< the GL name
        unsigned int mGLContext = 1;     ///< id of its context
        bool mIsCreated = false;
        unsigned int mTarget = 0;
    };

private:
    KyDArray<KyTextureBase*> mTextures;  ///< owned; one for each context, in order of creation
    unsigned int mTarget = 0;
    unsigned char* mPixels = nullptr;  ///< owned
    int mSize = 0;                     ///< width in texels
    bool mDirty = true;                ///< what is in `mTextures` is out of date
};
