#include "KyShaderKeptUniforms.h"

#include "KyShaderUniformCalls.h"

#include <algorithm>

std::atomic<unsigned int> KyShaderStrayValues::sWatchers{0};
std::atomic<unsigned long long> KyShaderStrayValues::sCount{0};
std::array<std::atomic<unsigned long long>, 64> KyShaderStrayValues::sLast{};

// Of several threads the latest wins, whichever writes last.
void KyShaderStrayValues::record(int location) {
    const unsigned long long count = sCount.fetch_add(1, std::memory_order_relaxed) + 1;
    std::atomic<unsigned long long>& latest = last(location);
    unsigned long long known = latest.load(std::memory_order_relaxed);
    while (known < count &&
           !latest.compare_exchange_weak(known, count, std::memory_order_relaxed)) {
    }
}

// Exactly as much: an array that grows in place would make half as much room again.
void KyShaderKeptUniforms::reserve(const KyShaderParametersUniform& uniforms) {
    if (mKept.size >= uniforms.mUniforms.size) return;
    KyDArray<Kept> kept;
    kept.resize(uniforms.mUniforms.size);
    std::copy_n(mKept.data, mKept.size, kept.data);
    mKept.swap(kept);
}

// As lean as `KyShaderParametersUniform::send`: nothing that a call could change is read again.
__attribute__((flatten)) void KyShaderKeptUniforms::sendAll(
    const KyShaderParametersUniform& uniforms, unsigned int program) {
    KyShaderUniform* const* const begin = uniforms.mUniforms.data;
    KyShaderUniform* const* const end = begin + uniforms.mUniforms.size;
    const Kept* kept = mKept.data;
    for (KyShaderUniform* const* it = begin; it != end; ++it, ++kept) {
        int location = kept->location;
        if (location == kUnknown) location = locate(it - begin, **it, program);
        if (location >= 0) (*it)->send(location);
    }
}

void KyShaderKeptUniforms::sendChanges(const KyShaderParametersUniform& uniforms,
                                       unsigned int program) {
    mChanges = kNever;  // also where an exception passes
    forgetWhatIsUncertain(uniforms);
    bool isComplete = true;
    for (long i = 0; i < uniforms.mUniforms.size; ++i)
        if (!sendChange(i, *uniforms.mUniforms[i], program)) isComplete = false;
    if (isComplete) mChanges = uniforms.mChanges;
}

// Whether it is certain that the program holds the value now, or lacks the uniform.
bool KyShaderKeptUniforms::sendChange(long index, KyShaderUniform& uniform, unsigned int program) {
    int location = mKept[index].location;
    if (location == kUnknown) location = locate(index, uniform, program);
    const bool isKept = mKept[index].location != kUnknown;
    if (location < 0) return isKept;
    if (!isKept) {
        forgetSentAt(location);
        uniform.send(location);
        return false;
    }
    Kept& value = mKept[mKept[index].place];
    const unsigned int bits = uniform.bits();
    if (value.type == uniform.mType && value.bits == bits) return true;
    value.type = KyShaderUniform::Type::Other;
    if (!uniform.send(location)) return false;
    value.type = uniform.mType;
    value.bits = bits;
    return true;
}

// A lookup whose check found an error counts this once.
[[gnu::noinline]] int KyShaderKeptUniforms::locate(long index, const KyShaderUniform& uniform,
                                                   unsigned int program) {
    int location = kUnknown;
    if (uniform.locate(program, location)) keepLocation(index, location);
    return location;
}

void KyShaderKeptUniforms::keepLocation(long index, int location) {
    int place = static_cast<int>(index);
    for (long i = 0; i < mKept.size && location >= 0; ++i)
        if (mKept[i].location == location) place = mKept[i].place;
    mKept[index] = {location, place};
}

void KyShaderKeptUniforms::forgetSent() {
    for (long i = 0; i < mKept.size; ++i)
        mKept[i].type = KyShaderUniform::Type::Other;
    mChanges = kNever;
}

void KyShaderKeptUniforms::forgetSentAt(int location) {
    for (long i = 0; i < mKept.size; ++i)
        if (mKept[i].location == location)
            mKept[mKept[i].place].type = KyShaderUniform::Type::Other;
}

void KyShaderKeptUniforms::forgetWhatIsUncertain(const KyShaderParametersUniform& uniforms) {
    const unsigned long long strays = KyShaderStrayValues::count();
    if (mForgotten != uniforms.mForgotten) {
        forgetSent();
    } else if (mStrays != strays) {
        for (long i = 0; i < mKept.size; ++i)
            if (mKept[i].location >= 0 && KyShaderStrayValues::hasAny(mKept[i].location, mStrays))
                mKept[mKept[i].place].type = KyShaderUniform::Type::Other;
    }
    mForgotten = uniforms.mForgotten;
    mStrays = strays;
}
