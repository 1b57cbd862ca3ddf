#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/KyShaderUniform.h>

#include <array>
#include <atomic>

/// Values that were sent while the program in use was not known: a value of a uniform activated
/// from outside, or all values after a `glUseProgram` that failed. The library does not ask the GL
/// which program they went into, so that each program forgets what it knew of these locations.
///
/// Any thread may call. Nothing is recorded while no program knows anything.
class KYGL_LOCAL KyShaderStrayValues {
public:
    /// Begins and ends the recording, once for each technique that needs it.
    ///@{
    static void watch() { sWatchers.fetch_add(1, std::memory_order_relaxed); }
    static void unwatch() { sWatchers.fetch_sub(1, std::memory_order_relaxed); }
    ///@}

    /// Records that a value is about to be sent to this location of whatever program.
    static void add(int location) {
        if (sWatchers.load(std::memory_order_relaxed) != 0) record(location);
    }

    /// Number of values recorded so far.
    static unsigned long long count() { return sCount.load(std::memory_order_relaxed); }

    /// Whether a value may have been sent to this location after the first `count` values.
    static bool hasAny(int location, unsigned long long count) {
        return last(location).load(std::memory_order_relaxed) > count;
    }

private:
    static void record(int location);
    // Locations share places: a program may forget more than it must.
    static std::atomic<unsigned long long>& last(int location) {
        return sLast[static_cast<unsigned int>(location) % sLast.size()];
    }

    static std::atomic<unsigned int> sWatchers;
    static std::atomic<unsigned long long> sCount;
    static std::array<std::atomic<unsigned long long>, 64> sLast;
};

/// What is known of the uniforms of a technique in one program that it has built: their locations,
/// and the values that were sent last. Uniform i of the set is known at index i, for life: the set
/// of a technique that keeps anything only grows.
class KYGL_LOCAL KyShaderKeptUniforms {
public:
    /// Makes room for the uniforms. Throws `std::bad_alloc`.
    void reserve(const KyShaderParametersUniform& uniforms);

    /// Sends every uniform to `program`, which is in use.
    void sendAll(const KyShaderParametersUniform& uniforms, unsigned int program);
    /// The same, without those whose value the program is known to hold.
    void sendChanges(const KyShaderParametersUniform& uniforms, unsigned int program);
    /// Whether `sendChanges` would send nothing.
    bool isCurrent(const KyShaderParametersUniform& uniforms) const {
        return mChanges == uniforms.mChanges && mStrays == KyShaderStrayValues::count();
    }

    /// Forgets the values.
    void forgetSent();

    /// The location of uniform `index`, negative if the program lacks it, or `kUnknown`.
    int location(long index) const { return index < mKept.size ? mKept[index].location : kUnknown; }
    static constexpr int kUnknown = -2;

private:
    // Uniforms with the same location, as "f" and "f[0]" have, share the value of one of them.
    struct Kept {
        int location = kUnknown;
        int place = 0;          // index of the one that has the value
        unsigned int bits = 0;  // the value sent last
        KyShaderUniform::Type type = KyShaderUniform::Type::Other;  // Other: not known
    };
    int locate(long index, const KyShaderUniform& uniform, unsigned int program);
    bool sendChange(long index, KyShaderUniform& uniform, unsigned int program);
    void keepLocation(long index, int location);
    void forgetSentAt(int location);
    void forgetWhatIsUncertain(const KyShaderParametersUniform& uniforms);

    KyDArray<Kept> mKept;
    unsigned long long mChanges = kNever;  // of the set, when the program had all its values
    unsigned long long mStrays = 0;        // up to which this object has looked
    unsigned long long mForgotten = 0;     // likewise, of the set
    static constexpr unsigned long long kNever = ~0ULL;
};
