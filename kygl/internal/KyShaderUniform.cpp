#include <kygl/KyShaderUniform.h>

#include "KyShaderKeptUniforms.h"
#include "KyShaderUniformCalls.h"

#include <cstring>
#include <memory>

namespace {

// The uniform as what its type says that it is: a dynamic cast takes ten times as long.
template <typename Derived, typename Uniform>
Derived* as(Uniform* uniform) {
    return static_cast<Derived*>(uniform);
}

// Whether two texts of `Bytes` to twice as many bytes are equal: both ends are, which overlap.
template <std::size_t Bytes>
bool sameEnds(const char* a, const char* b, std::size_t size) {
    const std::size_t last = size - Bytes;
    return std::memcmp(a, b, Bytes) == 0 && std::memcmp(a + last, b + last, Bytes) == 0;
}

// Whether these are equal texts of up to 32 bytes, as nearly all names are: a few comparisons,
// where a call takes as long as all the rest of setting a uniform. The most usual sizes come first.
[[gnu::always_inline]] inline bool sameShortText(const KyString& a, const KyString& b) {
    const auto size = static_cast<std::size_t>(a.size);
    if (a.size != b.size) return false;
    if (size >= 8 && size <= 16) return sameEnds<8>(a.data, b.data, size);
    if (size >= 4 && size <= 8) return sameEnds<4>(a.data, b.data, size);
    if (size >= 16 && size <= 32) return sameEnds<16>(a.data, b.data, size);
    return size <= 1 || (size < 4 && sameEnds<2>(a.data, b.data, size));
}

}  // namespace

KyShaderUniform::KyShaderUniform(const KyString& name) : mName(name) {}

KyShaderUniform::KyShaderUniform(const KyString& name, Type type) : mName(name), mType(type) {}

KyShaderUniform::~KyShaderUniform() = default;

void KyShaderUniform::setUniform(int) {}

bool KyShaderUniform::isEqual(const KyShaderUniform*) const {
    return false;
}

bool KyShaderUniform::activate(unsigned int program) {
    int shaderLocation = -1;
    locate(program, shaderLocation);
    return activateAt(shaderLocation);
}

// Whatever program is in use.
bool KyShaderUniform::activateAt(int shaderLocation) {
    if (shaderLocation < 0) return false;
    KyShaderStrayValues::add(shaderLocation);
    send(shaderLocation);
    return true;
}

unsigned int KyShaderUniform::bits() const {
    return mType == Type::Int ? bitsOf(as<const KyShaderUniformInt>(this)->mValue)
                              : bitsOf(as<const KyShaderUniformFloat>(this)->mValue);
}

bool operator==(const KyShaderUniform& a, const KyShaderUniform& b) {
    return compare(a.name(), b.name()) == 0 && a.isEqual(&b);
}

KyShaderUniformInt::KyShaderUniformInt(const KyString& name, int value)
    : KyShaderUniform(name, kType), mValue(value) {}

KyShaderUniformInt::~KyShaderUniformInt() = default;

void KyShaderUniformInt::setUniform(int location) {
    glUniform1i(location, mValue);
}

bool KyShaderUniformInt::isEqual(const KyShaderUniform* other) const {
    const auto* const same = dynamic_cast<const KyShaderUniformInt*>(other);
    return same != nullptr && same->mValue == mValue;
}

KyShaderUniformFloat::KyShaderUniformFloat(const KyString& name, float value)
    : KyShaderUniform(name, kType), mValue(value) {}

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
    ++mChanges;
    ++mListed;
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

// Modules set their uniforms in the same order in each frame, so the one after the last is tried
// first. No two have the same name: one that is found is the first in the set.
template <typename Uniform, typename Value>
KyShaderUniform* KyShaderParametersUniform::set(const KyString& name, Value value) {
    long next = mNext;
    if (next >= mUniforms.size) {
        if (mUniforms.size == 0) return setOther<Uniform>(name, value);
        next = 0;
    }
    if (!sameShortText(mUniforms[next]->mName, name)) return setOther<Uniform>(name, value);
    return setAt<Uniform>(next, value);
}

// Out of line, so that the usual road saves no registers.
template <typename Uniform, typename Value>
[[gnu::noinline]] KyShaderUniform* KyShaderParametersUniform::setOther(const KyString& name,
                                                                       Value value) {
    const bool isNext = mNext < mUniforms.size && compare(mUniforms[mNext]->mName, name) == 0;
    const long found = isNext ? mNext : find(name);
    if (found >= 0) return setAt<Uniform>(found, value);
    auto made = std::make_unique<Uniform>(name, value);
    mUniforms.append(made.get());
    made->mChanges = &mChanges;
    ++mChanges;
    ++mListed;
    return made.release();
}

template <typename Uniform, typename Value>
KyShaderUniform* KyShaderParametersUniform::setAt(long index, Value value) {
    mNext = index + 1;
    KyShaderUniform* const found = mUniforms[index];
    if (found->mType != Uniform::kType) return nullptr;
    if (KyShaderUniform::replace(as<Uniform>(found)->mValue, value)) ++mChanges;
    return found;
}

bool KyShaderParametersUniform::removeUniform(const KyString& name) {
    const long found = find(name);
    if (found < 0) return false;
    delete mUniforms[found];
    mUniforms.remove(found);
    ++mChanges;
    ++mListed;
    return true;
}

void KyShaderParametersUniform::activate(unsigned int program) {
    for (long i = 0; i < mUniforms.size; ++i)
        mUniforms[i]->activate(program);
}

// To a program that is known to be in use. Flattened, because this loop is the greater part of a
// steady apply: a call for each uniform adds a third to what the library does beside the GL.
__attribute__((flatten)) void KyShaderParametersUniform::send(unsigned int program) const {
    KyShaderUniform* const* const end = mUniforms.data + mUniforms.size;
    for (KyShaderUniform* const* it = mUniforms.data; it != end; ++it) {
        int shaderLocation = -1;
        (*it)->locate(program, shaderLocation);
        if (shaderLocation >= 0) (*it)->send(shaderLocation);
    }
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
