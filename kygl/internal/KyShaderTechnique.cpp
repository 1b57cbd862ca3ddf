#include <kygl/KyShaderTechnique.h>

#include "KyContextWatch.h"
#include "KyDiagnosis.h"
#include "kyglCheck.h"
#include "KyShaderBuildReport.h"
#include "KyShaderKeptUniforms.h"
#include "KyShaderUniformDiagnosis.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <kygl/kyglShaderGLSL.h>
#include <kygl/KyShader.h>

#include <cstdio>
#include <memory>

namespace {

constexpr char kSource[] = "internal/KyShaderTechnique";

}  // namespace

KyShaderTechnique::KyShaderTechnique(KyShader* vertexShader, KyShader* fragmentShader)
    : mFragmentShader(fragmentShader), mVertexShader(vertexShader) {}

// Without memory for the queue the program stays until its context goes: a destructor has nobody to
// tell.
KyShaderTechnique::~KyShaderTechnique() {
    try {
        deleteTechnique();
    } catch (const std::bad_alloc&) {
    }
    keepUniforms(false, false);
    delete mKept;
}

void KyShaderTechnique::setVertexShader(KyShader* shader) {
    if (shader == mVertexShader) return;
    mIsUpToDate = false;
    mVertexShader = shader;
}

void KyShaderTechnique::setFragmentShader(KyShader* shader) {
    if (shader == mFragmentShader) return;
    mIsUpToDate = false;
    mFragmentShader = shader;
}

bool KyShaderTechnique::isCashing() const {
    return mUseCashing && mVertexShader != nullptr && mFragmentShader != nullptr &&
           mVertexShader->isCaching() && mFragmentShader->isCaching();
}

inline void KyShaderTechnique::judge(const char* operation, unsigned int context, bool takesId) {
    KyContextWatch::judge(context, [=]() -> KyContextWatch::Operation {
        const auto fileOf = [](const KyShader* shader) {
            return shader != nullptr ? shader->mFileName.dataPtr() : nullptr;
        };
        return {operation, "it acts on GL objects that have the same names there",
                fileOf(mVertexShader), fileOf(mFragmentShader), takesId};
    });
}

bool KyShaderTechnique::compile(unsigned int context) {
    if (KyDiagnosis::isOn()) judge("compile", context, true);
    return isBuilt(context) || build(context);
}

inline bool KyShaderTechnique::isBuilt(unsigned int context) const {
    return mVertexShader != nullptr && mFragmentShader != nullptr &&
           mVertexShader->isCurrent(context) && mFragmentShader->isCurrent(context) &&
           mHasProgram && mIsUpToDate && mGLContext == context && !mBuildFailed;
}

// Out of line, so that a steady apply saves no registers for it.
[[gnu::noinline]] bool KyShaderTechnique::build(unsigned int context) {
    if (mVertexShader == nullptr || mFragmentShader == nullptr) return false;
    return isCashing() ? compileCashing(context) : link(context);
}

bool KyShaderTechnique::link(unsigned int context) {
    deleteTechnique();
    const unsigned int iov = mVertexShader->bringUpToDate(context);
    const unsigned int iof = mFragmentShader->bringUpToDate(context);
    if (!mVertexShader->isCurrent(context) || !mFragmentShader->isCurrent(context)) return false;

    const KyShaderBuildReport report;
    mProgram = 0;
    mGLContext = context;
    KyResult result;
    try {
        result = makeProgram(iov, iof);
    } catch (...) {
        letGoOfProgram();
        throw;
    }
    if (result.ok()) {
        mHasProgram = true;
        mIsUpToDate = true;
        mOwnsProgram = true;
        mBuildFailed = false;
        mJudgedIn = 0;
    } else {
        std::puts(result.text());
    }
    if (report)
        report.deliver([&] {
            return report.linked(mVertexShader->buildStage(), mFragmentShader->buildStage(),
                                 context, result, mProgram);
        });
    return result.ok();
}

KyResult KyShaderTechnique::makeProgram(unsigned int iov, unsigned int iof) {
    KYGL_CHECKED(mProgram = glCreateProgramObjectARB(), 1);
    KYGL_CHECKED(glAttachObjectARB(mProgram, iov), 1);
    KYGL_CHECKED(glAttachObjectARB(mProgram, iof), 1);
    return kyglShaderGLSLLinkProgram(mProgram);
}

// Queues a program that an exception left unfinished: now, or without memory for the queue when
// this technique builds again or dies.
void KyShaderTechnique::letGoOfProgram() noexcept {
    mHasProgram = mProgram != 0;
    mOwnsProgram = mHasProgram;
    try {
        deleteTechnique();
    } catch (const std::bad_alloc&) {
    }
}

bool KyShaderTechnique::compileCashing(unsigned int context) {
    return KyDiagnosis::wantsBuilds() ? findOrBuildObserved(context) : findOrBuild(context);
}

// A stage that is tried twice is one build.
[[gnu::cold]] bool KyShaderTechnique::findOrBuildObserved(unsigned int context) {
    KyShaderBuildBatch builds;
    const bool isThere = findOrBuild(context);
    builds.deliver();
    return isThere;
}

bool KyShaderTechnique::findOrBuild(unsigned int context) {
    mBuildFailed = true;  // also where an exception passes
    KyShaderTechnique* const entry =
        mTechniqueCashing.getTechnique(mVertexShader, mFragmentShader, context);
    if (entry == nullptr) return false;
    if (mOwnsProgram) deleteTechnique();  // from a time with shaders that do not cache
    mHasProgram = entry->mHasProgram;
    mIsUpToDate = entry->mIsUpToDate;
    mProgram = entry->mProgram;
    mGLContext = context;
    mEntry = entry;
    mBuildFailed = false;
    return true;
}

// While diagnostics are off, all that is left of them here is a load and a branch.
void KyShaderTechnique::apply(unsigned int context) {
    if (KyDiagnosis::isOn()) return applyJudged(context);
    use(isBuilt(context) || build(context));
}

[[gnu::noinline]] void KyShaderTechnique::applyJudged(unsigned int context) {
    judge("apply", context, true);
    const bool isThere = isBuilt(context) || build(context);
    if (isThere) judgeUniforms();
    use(isThere);
}

// Once for each program, and again where names came or went. What the driver would refuse is
// reported before it does.
inline void KyShaderTechnique::judgeUniforms() {
    KyShaderTechnique& program = mOwnsProgram || mEntry == nullptr ? *this : *mEntry;
    if (program.mJudgedIn == KyDiagnosis::enables() &&
        program.mJudged == mUniformParameters.mListed)
        return;
    program.mJudgedIn = KyDiagnosis::enables();
    program.mJudged = mUniformParameters.mListed;
    if (KyDiagnosis::wants(KyDiagnostics::Uniform)) compareUniforms();
}

[[gnu::cold]] void KyShaderTechnique::compareUniforms() {
    try {
        KyShaderUniformDiagnosis(mUniformParameters, mProgram, mGLContext,
                                 mVertexShader->buildStage(), mFragmentShader->buildStage())
            .run();
    } catch (const std::bad_alloc&) {  // the messages are lost
    }
}

// After a failed build the name may be that of another context's program, and after a failed
// glUseProgram another program may be in use: which one gets the values is not known.
// @param isThere whether there is a program for the context that was asked for
inline void KyShaderTechnique::use(bool isThere) {
    if (isThere) {
        const bool isUsed = KYGL_CHECKED(glUseProgram(mProgram), 0).ok();
        if (mKeepsLocations && isUsed)
            sendUniforms();
        else if (isUsed)
            mUniformParameters.send(mProgram);
        else
            mUniformParameters.activate(mProgram);
    } else if (mHasProgram && mIsUpToDate) {
        KYGL_CHECKED(glUseProgram(mProgram), 0);
        mUniformParameters.activate(mProgram);
    } else {
        KYGL_CHECKED(glUseProgram(0), 0);
    }
}

void KyShaderTechnique::sendUniforms() {
    KyShaderKeptUniforms* const kept = mEntry->mKept;
    if (mKeepsValues && kept != nullptr && kept->isCurrent(mUniformParameters)) return;
    if (!makeRoomToKeep())
        mUniformParameters.send(mProgram);
    else if (mKeepsValues)
        mEntry->mKept->sendChanges(mUniformParameters, mProgram);
    else
        mEntry->mKept->sendAll(mUniformParameters, mProgram);
}

// Without memory the uniforms are sent by name, and what was known of their values ends.
bool KyShaderTechnique::makeRoomToKeep() noexcept {
    try {
        if (mEntry->mKept == nullptr) mEntry->mKept = new KyShaderKeptUniforms;
        mEntry->mKept->reserve(mUniformParameters);
        return true;
    } catch (const std::bad_alloc&) {
        if (mEntry->mKept != nullptr) mEntry->mKept->forgetSent();
        return false;
    }
}

void KyShaderTechnique::keepUniforms(bool locations, bool values) {
    mKeepsLocations = locations;
    if (values == mKeepsValues) return;
    mKeepsValues = values;
    forgetSent();
    if (values)
        KyShaderStrayValues::watch();
    else
        KyShaderStrayValues::unwatch();
}

void KyShaderTechnique::forgetSent() {
    mUniformParameters.mForgotten = ++mUniformParameters.mChanges;
}

void KyShaderTechnique::unUse() {
    KYGL_CHECKED(glUseProgram(0), 0);
}

bool KyShaderTechnique::isApplied() {
    GLboolean isApply = GL_FALSE;
    KYGL_CHECKED(isApply = glIsProgram(mProgram), 0);
    return isApply != GL_FALSE;
}

bool KyShaderTechnique::applyUniform(KyShaderUniform* uniform) {
    if (uniform == nullptr) return false;
    const bool isJudged = KyDiagnosis::isOn() && mHasProgram;
    if (isJudged) judge("applyUniform", mGLContext, false);
    if (!isApplied()) return false;
    if (isJudged && isBuilt(mGLContext)) judgeUniforms();  // its shaders are still those of it
    if (!mKeepsLocations || mBuildFailed || mEntry == nullptr || mEntry->mKept == nullptr)
        return uniform->activate(mProgram);
    const int location = mEntry->mKept->location(mUniformParameters.mUniforms.find(uniform));
    if (location == KyShaderKeptUniforms::kUnknown) return uniform->activate(mProgram);
    return uniform->activateAt(location);
}

int KyShaderTechnique::getAttribLocation(const KyString& location) {
    if (!mHasProgram || !mIsUpToDate) return -1;
    int result = -1;
    KYGL_CHECKED(result = glGetAttribLocation(mProgram, location.dataPtr()), 0);
    return result;
}

// A program that came from the cache belongs to its entry, which queues it itself.
void KyShaderTechnique::deleteTechnique() {
    if (mHasProgram && mOwnsProgram) KyDeferredDeleteMap::pushTehniqueHandle(mProgram, mGLContext);
    mOwnsProgram = false;
    mHasProgram = false;
    mIsUpToDate = false;
}

KyShaderTechnique::KyTechniqueCaching::~KyTechniqueCaching() {
    clear();
}

void KyShaderTechnique::KyTechniqueCaching::clear() {
    for (long i = 0; i < mTechniques.size; ++i)
        delete mTechniques[i];
    mTechniques.resize(0);
    mVertexIds.resize(0);
    mFragmentIds.resize(0);
}

KyShaderTechnique* KyShaderTechnique::KyTechniqueCaching::getTechnique(KyShader* vertex,
                                                                       KyShader* fragment,
                                                                       unsigned int context) {
    if (vertex == nullptr || fragment == nullptr) return nullptr;
    const unsigned int vertexId = vertex->bringUpToDate(context);
    const unsigned int fragmentId = fragment->bringUpToDate(context);
    // 0 is the name of every stage that failed.
    if (vertexId != 0 && fragmentId != 0)
        for (long i = mVertexIds.find(vertexId); i < mVertexIds.size;
             i = mVertexIds.find(vertexId, i + 1))
            if (mFragmentIds[i] == fragmentId && mTechniques[i]->mGLContext == context)
                return mTechniques[i];

    mTechniques.reserve(mTechniques.size + 1);
    mVertexIds.reserve(mVertexIds.size + 1);
    mFragmentIds.reserve(mFragmentIds.size + 1);
    auto made = std::make_unique<KyShaderTechnique>(vertex, fragment);
    made->mUseCashing = false;
    try {
        if (!made->build(context)) return nullptr;
    } catch (...) {
        // A program that the queue has no memory for stays here, under names that match nothing.
        if (made->mOwnsProgram) append(made.release(), 0, 0);
        throw;
    }
    // A stage that failed above may have compiled now: these are the names that were linked.
    append(made.get(), vertex->bringUpToDate(context), fragment->bringUpToDate(context));
    return made.release();
}

void KyShaderTechnique::KyTechniqueCaching::append(KyShaderTechnique* technique,
                                                   unsigned int vertexId, unsigned int fragmentId) {
    mTechniques.append(technique);
    mVertexIds.append(vertexId);
    mFragmentIds.append(fragmentId);
}
