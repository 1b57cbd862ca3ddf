#include <kygl/KyShader.h>

#include "KyContextWatch.h"
#include "KyDiagnosis.h"
#include "kyglCheck.h"
#include "KyShaderBuildReport.h"
#include "KyShaderKnownOrigins.h"
#include "KyShaderSource.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kyglShaderGLSL.h>

#include <memory>

namespace {

constexpr char kSource[] = "internal/KyShader";

unsigned int lookupKey(const KyShaderParametersMacros& macros, unsigned int context) {
    return static_cast<unsigned int>(macros.fingerprint()) ^ (0x9e3779b9U * context);
}

}  // namespace

KyString KyShader::mFolderPath;

KyShader::KyShader(const KyString& file, const KyString& folder, bool caching)
    : mFileName(file), mFolderName(folder) {
    if (caching) mShaderCashing = new KyShaderCashing;
}

// Without memory for the queue the GL object stays until its context goes: a destructor has nobody
// to tell.
KyShader::~KyShader() {
    try {
        deleteShader();
    } catch (const std::bad_alloc&) {
    }
    delete mShaderCashing;
}

unsigned int KyShader::compile(unsigned int context) {
    if (KyDiagnosis::isOn())
        KyContextWatch::judge(context, [this]() -> KyContextWatch::Operation {
            return {"compile", "it builds a shader object there", mFileName.dataPtr()};
        });
    return bringUpToDate(context);
}

unsigned int KyShader::bringUpToDate(unsigned int context) {
    if (isCurrent(context)) return mId;
    if (mShaderCashing != nullptr) {
        compileCaching(context);
        return mId;
    }
    return build(context);
}

// Out of line, so that a search in the cache saves no registers for it.
[[gnu::noinline]] unsigned int KyShader::build(unsigned int context) {
    deleteShader();
    const KyShaderBuildReport report;
    const KyString text = load(static_cast<bool>(report));
    const KyResult result = kyglShaderGLSLCreateObject(text, mId, getType());
    const bool compiled = result.ok();
    mIsUpToDate = compiled;
    mHasObject = compiled;
    mGLContext = context;
    keyChanged();
    KYGL_CHECK_GROUP(2);
    if (report)
        report.deliver([&] {
            KyShaderBuildStage stage = buildStage();
            stage.source = KyString(text.dataPtr() + stage.macroLines.length());
            return report.compiled(stage, getType() != 0, context, result, mId);
        });
    return mId;
}

void KyShader::compileCaching(unsigned int context) {
    KyShader* const entry = getCachingShader(context);
    // An entry is found again by its context, so a new one gets it before anything can fail.
    if (!entry->mHasObject) {
        entry->mGLContext = context;
        entry->keyChanged();
    }
    entry->bringUpToDate(context);
    mId = entry->mId;
    mIsUpToDate = entry->mIsUpToDate;
    mHasObject = entry->mHasObject;
    mGLContext = context;
}

KyString KyShader::loadFromFile() {
    return load(KyDiagnosis::wantsBuilds());
}

// @param keepsOrigins whether somebody may want to know where each line comes from
KyString KyShader::load(bool keepsOrigins) {
    const KyString& source = mSharedSource != nullptr ? *mSharedSource : mSource;
    if (source.length() > 0) return shaderText(mParameters, source);
    const KyShaderExpansion read = readFile(keepsOrigins);
    if (read.isComplete) keepSource(read.text);
    return shaderText(mParameters, read.text);
}

// Without memory for the origins only the places of messages are lost.
KyShaderExpansion KyShader::readFile(bool keepsOrigins) const {
    const KyString path = shaderPath(mFolderPath, mFolderName, mFileName);
    if (!keepsOrigins) return loadShader(path.dataPtr());
    try {
        const KyShaderKnownOrigins origins(KyShaderKnownOrigins::fullPath(path));
        return {origins.get()->source(), origins.get()->isComplete()};
    } catch (const std::bad_alloc&) {
        return loadShader(path.dataPtr());
    }
}

// What a build that is done has to say of this stage.
KyShaderBuildStage KyShader::buildStage() {
    if (mShaderCashing != nullptr) return getCachingShader(mGLContext)->buildStage();
    const KyString path = shaderPath(mFolderPath, mFolderName, mFileName);
    return {mFileName, mFolderName, KyShaderKnownOrigins::fullPath(path),
            mParameters.getDefineMacros(), mSharedSource != nullptr ? *mSharedSource : mSource};
}

void KyShader::keepSource(const KyString& text) {
    if (mOwner != nullptr && text.length() > 0)
        mSharedSource = mOwner->share(text);
    else
        mSource = text;
}

// A caching shader's name belongs to one of its entries, which queues it itself.
void KyShader::deleteShader() {
    if (mHasObject && mShaderCashing == nullptr)
        KyDeferredDeleteMap::pushShaderHandle(mId, mGLContext);
    mHasObject = false;
    mIsUpToDate = false;
}

void KyShader::setParameters(const KyShaderParametersMacros& macros) {
    if (hasParameters(macros)) return;
    mParameters = macros;
    macrosChanged();
}

bool KyShader::hasParameters(const KyShaderParametersMacros& macros) const {
    return mParameters == macros;
}

bool KyShader::hasParameter(const KyString& macro) const {
    return mParameters.hasMacro(macro);
}

bool KyShader::pushParameter(const KyString& macro) {
    return push(KyShaderParametersMacros::wanted(macro));
}

bool KyShader::removeParameter(const KyString& macro) {
    return remove(KyShaderParametersMacros::wanted(macro));
}

bool KyShader::push(const KyShaderParametersMacros::Wanted& macro) {
    const bool changed = mParameters.push(macro);
    if (changed) macrosChanged();
    return changed;
}

bool KyShader::remove(const KyShaderParametersMacros::Wanted& macro) {
    const bool changed = mParameters.remove(macro);
    if (changed) macrosChanged();
    return changed;
}

void KyShader::clearParameters() {
    if (mParameters.count() == 0) return;
    mParameters.clear();
    macrosChanged();
}

void KyShader::macrosChanged() {
    mIsUpToDate = false;
    keyChanged();
}

void KyShader::keyChanged() {
    if (mOwner != nullptr) mOwner->mKeys[mIndex] = lookupKey(mParameters, mGLContext);
}

KyShader::KyShaderCashing::~KyShaderCashing() {
    clear();
}

void KyShader::KyShaderCashing::clear() {
    for (long i = 0; i < mShaders.size; ++i)
        delete mShaders[i];
    mShaders.resize(0);
    mKeys.resize(0);
    for (long i = 0; i < mSources.size; ++i)
        delete mSources[i];
    mSources.resize(0);
}

KyShader* KyShader::KyShaderCashing::getVertexShader(const KyShaderParametersMacros& macros,
                                                     unsigned int context, const KyString& file,
                                                     const KyString& folder) {
    return findOrMake<KyVertexShader>(1, macros, context, file, folder);
}

KyShader* KyShader::KyShaderCashing::getFragmentShader(const KyShaderParametersMacros& macros,
                                                       unsigned int context, const KyString& file,
                                                       const KyString& folder) {
    return findOrMake<KyFragmentShader>(0, macros, context, file, folder);
}

const KyString* KyShader::KyShaderCashing::share(const KyString& text) {
    for (long i = 0; i < mSources.size; ++i)
        if (compare(*mSources[i], text) == 0) return mSources[i];
    mSources.reserve(mSources.size + 1);
    mSources.append(new KyString(text));
    return mSources[mSources.size - 1];
}

// Equal keys nearly always mean the entry; what it really holds decides.
template <typename Shader>
KyShader* KyShader::KyShaderCashing::findOrMake(int type, const KyShaderParametersMacros& macros,
                                                unsigned int context, const KyString& file,
                                                const KyString& folder) {
    const unsigned int key = lookupKey(macros, context);
    for (long i = mKeys.find(key); i < mKeys.size; i = mKeys.find(key, i + 1)) {
        KyShader* const entry = mShaders[i];
        if (entry->mGLContext == context && entry->getType() == type &&
            entry->hasParameters(macros))
            return entry;
    }
    auto made = std::make_unique<Shader>(file, folder, false);
    made->setParameters(macros);
    mShaders.reserve(mShaders.size + 1);
    mKeys.reserve(mKeys.size + 1);
    KyShader* const entry = made.release();
    entry->mOwner = this;
    entry->mIndex = mShaders.append(entry);
    mKeys.append(lookupKey(macros, entry->mGLContext));
    return entry;
}

KyVertexShader::KyVertexShader(const KyString& file, const KyString& folder, bool caching)
    : KyShader(file, folder, caching) {}

KyVertexShader::~KyVertexShader() = default;

KyShader* KyVertexShader::getCachingShader(unsigned int context) {
    return mShaderCashing->getVertexShader(mParameters, context, mFileName, mFolderName);
}

int KyVertexShader::getType() {
    return 1;
}

KyFragmentShader::KyFragmentShader(const KyString& file, const KyString& folder, bool caching)
    : KyShader(file, folder, caching) {}

KyFragmentShader::~KyFragmentShader() = default;

KyShader* KyFragmentShader::getCachingShader(unsigned int context) {
    return mShaderCashing->getFragmentShader(mParameters, context, mFileName, mFolderName);
}

int KyFragmentShader::getType() {
    return 0;
}
