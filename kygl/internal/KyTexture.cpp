#include <kygl/KyTexture.h>

#include "KyContextWatch.h"
#include "KyDiagnosis.h"
#include "kyglCheck.h"

#include <kygl/KyDeferredDeleteMap.h>

#include <cstring>
#include <memory>

namespace {

constexpr char kSource[] = "internal/KyTexture";
constexpr std::size_t kBytesPerTexel = 4;

}  // namespace

KyTexture::~KyTexture() {
    deletePixels();
}

void KyTexture::create1D(const void* pixels, int size) {
    createPixels(pixels, size);
    mDirty = true;
    mSize = size;
    mTarget = GL_TEXTURE_1D;
}

void KyTexture::createPixels(const void* pixels, int size) {
    if (size <= 0) return;
    const std::size_t bytes = static_cast<std::size_t>(size) * kBytesPerTexel;
    auto copy = std::unique_ptr<unsigned char[]>(new unsigned char[bytes]);
    std::memcpy(copy.get(), pixels, bytes);
    deletePixels();
    mPixels = copy.release();
}

void KyTexture::deletePixels() {
    delete[] mPixels;
    mPixels = nullptr;
    mSize = 0;
}

int KyTexture::bindTexture(unsigned int context) {
    if (mPixels == nullptr) return 0;
    if (KyDiagnosis::isOn())
        KyContextWatch::judge(context, []() -> KyContextWatch::Operation {
            return {"bindTexture", "it binds the texture that has the same name there"};
        });
    if (mDirty) deleteTextures();
    for (long i = 0; i < mTextures.size; ++i) {
        KyTextureBase* const texture = mTextures[i];
        if (!texture->mIsCreated || texture->mGLContext != context) continue;
        texture->bindTexture();
        return 1;
    }
    mDirty = false;
    mTextures.reserve(mTextures.size + 1);
    auto made = std::make_unique<KyTextureBase>();
    made->createRGBAbyte(mTarget, mPixels, mSize, context);
    made->bindTexture();
    mTextures.append(made.release());
    return 1;
}

void KyTexture::deleteTextures() {
    for (long i = 0; i < mTextures.size; ++i)
        delete mTextures[i];
    mTextures.resize(0);
}

void KyTexture::destroy() {
    deletePixels();
    deleteTextures();
}

// Without memory for the queue the GL texture stays until its context goes: a destructor has nobody
// to tell.
KyTexture::KyTextureBase::~KyTextureBase() {
    try {
        KyDeferredDeleteMap::pushTextureHandle(mId, mGLContext);
    } catch (const std::bad_alloc&) {
    }
}

void KyTexture::KyTextureBase::createRGBAbyte(unsigned int target, void* pixels, int size,
                                              unsigned int context) {
    if (mIsCreated) return;
    mGLContext = context;
    KYGL_CHECKED(glGenTextures(1, &mId), 0);
    KYGL_CHECKED(glBindTexture(target, mId), 0);
    KYGL_CHECKED(glTexImage1D(target, 0, 4, size, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels), 1);
    mIsCreated = true;
    mTarget = target;
}

void KyTexture::KyTextureBase::bindTexture() {
    KYGL_CHECKED(glBindTexture(mTarget, mId), 0);
}
