#include <kygl/KyShaderProgram.h>

#include "kyglCheck.h"

#include <kygl/KyShader.h>
#include <kygl/KyShaderTechnique.h>
#include <kylib/KyEnvironment.h>

#include <QString>

#include <memory>

namespace {

constexpr char kSource[] = "internal/KyShaderProgram";

}  // namespace

KyShaderProgram::~KyShaderProgram() {
    deleteProgram();
}

void KyShaderProgram::create(const KyString& vertexFile, const KyString& fragmentFile,
                             const KyString& folder) {
    auto vertex = std::make_unique<KyVertexShader>(vertexFile, folder, true);
    auto fragment = std::make_unique<KyFragmentShader>(fragmentFile, folder, true);
    auto technique = std::make_unique<KyShaderTechnique>(vertex.get(), fragment.get());
    KyString folderName = folder;
    deleteProgram();
    mVertexShader = vertex.release();
    mFragmentShader = fragment.release();
    mTechnique = technique.release();
    mFolderName.swap(folderName);
    setUniformMode(mUniformMode);
}

// The technique goes first: it points to the shaders.
void KyShaderProgram::deleteProgram() {
    delete mTechnique;
    delete mVertexShader;
    delete mFragmentShader;
    mTechnique = nullptr;
    mVertexShader = nullptr;
    mFragmentShader = nullptr;
}

bool KyShaderProgram::pushVertexMacro(const KyString& macro) {
    return mVertexShader != nullptr && mVertexShader->pushParameter(macro);
}

bool KyShaderProgram::pushFragmentMacro(const KyString& macro) {
    return mFragmentShader != nullptr && mFragmentShader->pushParameter(macro);
}

bool KyShaderProgram::pushMacro(const KyString& macro) {
    if (mVertexShader == nullptr) return false;
    const auto wanted = KyShaderParametersMacros::wanted(macro);
    mFragmentShader->push(wanted);
    return mVertexShader->push(wanted);
}

bool KyShaderProgram::removeVertexMacro(const KyString& macro) {
    return mVertexShader != nullptr && mVertexShader->removeParameter(macro);
}

bool KyShaderProgram::removeFragmentMacro(const KyString& macro) {
    return mFragmentShader != nullptr && mFragmentShader->removeParameter(macro);
}

bool KyShaderProgram::removeMacro(const KyString& macro) {
    if (mVertexShader == nullptr) return false;
    const auto wanted = KyShaderParametersMacros::wanted(macro);
    mFragmentShader->remove(wanted);
    return mVertexShader->remove(wanted);
}

void KyShaderProgram::setVertexParameter(const KyShaderParametersMacros& macros) {
    if (mVertexShader != nullptr) mVertexShader->setParameters(macros);
}

void KyShaderProgram::setFragmentParameter(const KyShaderParametersMacros& macros) {
    if (mFragmentShader != nullptr) mFragmentShader->setParameters(macros);
}

void KyShaderProgram::setParameter(const KyShaderParametersMacros& macros) {
    setFragmentParameter(macros);
    setVertexParameter(macros);
}

KyShaderUniform* KyShaderProgram::setUniform(const KyString& name, float value) {
    return mTechnique != nullptr ? mTechnique->uniforms().setUniform(name, value) : nullptr;
}

KyShaderUniform* KyShaderProgram::setUniform(const KyString& name, int value) {
    return mTechnique != nullptr ? mTechnique->uniforms().setUniform(name, value) : nullptr;
}

void KyShaderProgram::setUniformMode(UniformMode mode) {
    mUniformMode = mode;
    if (mTechnique == nullptr) return;
    mTechnique->keepUniforms(mode != UniformMode::ByName, mode == UniformMode::ChangesOnly);
}

void KyShaderProgram::forgetSent() {
    if (mTechnique != nullptr) mTechnique->forgetSent();
}

bool KyShaderProgram::applyUniform(const KyString& name, float value) {
    KyShaderUniform* const uniform = setUniform(name, value);
    return uniform != nullptr && mTechnique->applyUniform(uniform);
}

bool KyShaderProgram::applyUniform(const KyString& name, int value) {
    KyShaderUniform* const uniform = setUniform(name, value);
    return uniform != nullptr && mTechnique->applyUniform(uniform);
}

int KyShaderProgram::getAttribLocation(const KyString& location) {
    return mTechnique != nullptr ? mTechnique->getAttribLocation(location) : -1;
}

bool KyShaderProgram::compile(unsigned int context) {
    return mTechnique != nullptr && mTechnique->compile(context);
}

void KyShaderProgram::apply(unsigned int context) {
    if (mTechnique != nullptr) mTechnique->apply(context);
}

bool KyShaderProgram::isApplied() {
    return mTechnique != nullptr && mTechnique->isApplied();
}

void KyShaderProgram::unUse() {
    KYGL_CHECKED(glUseProgram(0), 0);
}

void KyShaderProgram::enableClipPlane(KyShaderParametersMacros& macros) {
    if (KyEnvironment::exists(QStringLiteral("NO_CLIP_PLANE"), false)) return;
    macros.pushMacro("ENABLE_CLIPVERTEX");
}
