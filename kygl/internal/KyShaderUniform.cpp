#include <kygl/KyShaderUniform.h>

#include "kyglCheck.h"

#include <memory>

namespace {

constexpr char kSource[] = "internal/KyShaderUniform";

}  // namespace

KyShaderUniform::KyShaderUniform(const KyString& name) : mName(name) {}

KyShaderUniform::~KyShaderUniform() = default;

void KyShaderUniform::setUniform(int) {}

bool KyShaderUniform::isEqual(const KyShaderUniform*) const {
    return false;
}

bool KyShaderUniform::activate(unsigned int program) {
    int shaderLocation = -1;
    KYGL_CHECKED(shaderLocation = glGetUniformLocation(program, mName.dataPtr()), 0);
    if (shaderLocation < 0) return false;
    KYGL_CHECKED(setUniform(shaderLocation), 1);
    return true;
}

bool operator==(const KyShaderUniform& a, const KyShaderUniform& b) {
    return compare(a.name(), b.name()) == 0 && a.isEqual(&b);
}

KyShaderUniformInt::KyShaderUniformInt(const KyString& name, int value)
    : KyShaderUniform(name), mValue(value) {}

KyShaderUniformInt::~KyShaderUniformInt() = default;

void KyShaderUniformInt::setUniform(int location) {
    glUniform1i(location, mValue);
}

bool KyShaderUniformInt::isEqual(const KyShaderUniform* other) const {
    const auto* const same = dynamic_cast<const KyShaderUniformInt*>(other);
    return same != nullptr && same->mValue == mValue;
}

KyShaderUniformFloat::KyShaderUniformFloat(const KyString& name, float value)
    : KyShaderUniform(name), mValue(value) {}

KyShaderUniformFloat::~KyShaderUniformFloat() = default;

void KyShaderUniformFloat::setUniform(int location) {
    glUniform1f(location, mValue);
}

bool KyShaderUniformFloat::isEqual(const KyShaderUniform* other) const {
    const auto* const same = dynamic_cast<const KyShaderUniformFloat*>(other);
    return same != nullptr && same->mValue == mValue;
}

KyShaderParametersUniform::~KyShaderParametersUniform() {
    clear();
}

void KyShaderParametersUniform::clear() {
    for (long i = 0; i < mUniforms.size; ++i)
        delete mUniforms[i];
    mUniforms.resize(0);
}

KyShaderUniform* KyShaderParametersUniform::getUniform(const KyString& name) const {
    const long found = find(name);
    return found >= 0 ? mUniforms[found] : nullptr;
}

bool KyShaderParametersUniform::hasUniform(const KyString& name) const {
    return find(name) >= 0;
}

KyShaderUniform* KyShaderParametersUniform::setUniform(const KyString& name, float value) {
    return set<KyShaderUniformFloat>(name, value);
}

KyShaderUniform* KyShaderParametersUniform::setUniform(const KyString& name, int value) {
    return set<KyShaderUniformInt>(name, value);
}

template <typename Uniform, typename Value>
KyShaderUniform* KyShaderParametersUniform::set(const KyString& name, Value value) {
    if (KyShaderUniform* const found = getUniform(name)) {
        auto* const same = dynamic_cast<Uniform*>(found);
        if (same != nullptr) same->setValue(value);
        return same;
    }
    auto made = std::make_unique<Uniform>(name, value);
    mUniforms.append(made.get());
    return made.release();
}

bool KyShaderParametersUniform::removeUniform(const KyString& name) {
    const long found = find(name);
    if (found < 0) return false;
    delete mUniforms[found];
    mUniforms.remove(found);
    return true;
}

// Flattened, because this loop is the greater part of a steady apply: a call for each uniform adds
// a third to what the library does beside the GL.
__attribute__((flatten)) void KyShaderParametersUniform::activate(unsigned int program) {
    KyShaderUniform* const* const end = mUniforms.data + mUniforms.size;
    for (KyShaderUniform* const* it = mUniforms.data; it != end; ++it)
        (*it)->activate(program);
}

long KyShaderParametersUniform::find(const KyString& name) const {
    for (long i = 0; i < mUniforms.size; ++i)
        if (compare(mUniforms[i]->name(), name) == 0) return i;
    return -1;
}

bool operator==(const KyShaderParametersUniform& a, const KyShaderParametersUniform& b) {
    if (a.mUniforms.size != b.mUniforms.size) return false;
    for (long i = 0; i < a.mUniforms.size; ++i)
        if (!(*a.mUniforms[i] == *b.mUniforms[i])) return false;
    return true;
}
