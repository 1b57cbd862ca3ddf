#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/kyglApi.h>
#include <kylib/KyString.h>

#include <cstddef>

/// One preprocessor macro: whatever follows `#define` on its line, a bare name or a name, a blank
/// and a value. The text is neither parsed nor changed; what a shader compiler cannot digest comes
/// back as a failed compile.
class KYGL_API KyShaderMacro {
public:
    /// Copies the text.
    explicit KyShaderMacro(const KyString& text);

    /// "#define ", the text and one line feed.
    KyString getDefineString() const;

    /// The text as it was given.
    const KyString& text() const { return mText; }
    /// The same for equal macros.
    unsigned int hash() const { return mHash; }

private:
    KyString mText;
    unsigned int mHash;
};

/// Byte equality of the whole texts: case and every blank count.
KYGL_API bool operator==(const KyShaderMacro& a, const KyShaderMacro& b);

/// An ordered set of macros without duplicates: what one shader is built with.
///
/// The order is that of the pushes; it is the order of the generated lines and counts in equality.
/// A set is kept as these lines, so a copy copies two blocks of bytes and shares nothing. Lookups
/// are linear. A set is changed by one thread at a time; any number may read one that nobody
/// changes. A failed allocation throws `std::bad_alloc` and leaves the set as it was.
///
///     KyShaderParametersMacros macros;
///     macros.pushMacro("LIGHTS 3");
///     macros.pushMacro("FOG");
///     program.setParameter(macros);
class KYGL_API KyShaderParametersMacros {
public:
    KyShaderParametersMacros() = default;
    ~KyShaderParametersMacros();
    KyShaderParametersMacros(const KyShaderParametersMacros&) = delete;
    /// Makes this set a deep copy of `other`, in its order. Assigning a set to itself does nothing.
    KyShaderParametersMacros& operator=(const KyShaderParametersMacros& other);

    /// Removes every macro; the storage stays.
    void clear();

    /// Whether a macro of this text is in the set.
    bool hasMacro(const KyString& text) const;

    /// Appends a macro at the end. @return false, and no change, if it is there already
    bool pushMacro(const KyString& text);

    /// Removes a macro; the others keep their order. @return false if it was not there
    bool removeMacro(const KyString& text);

    /// The lines of all macros in their order, each with its line feed; "" for an empty set.
    KyString getDefineMacros() const;

    /// Number of macros.
    long count() const { return mMacros.size; }

    /// A number that is the same for equal sets, so that two sets with different numbers need no
    /// further look; order counts. It takes a step for each macro from the first place on where one
    /// was removed, unless that was the last one.
    unsigned long long fingerprint() const {
        unsigned long long fingerprint = mFingerprint;
        for (long i = mFingerprinted; i < mMacros.size; ++i)
            fingerprint = extend(fingerprint, mMacros[i].hash);
        return fingerprint;
    }

private:
    friend class KyShader;
    friend class KyShaderProgram;
    friend bool operator==(const KyShaderParametersMacros&, const KyShaderParametersMacros&);

    struct Macro {
        unsigned long long hash;
        long length;  ///< of the text
        long end;     ///< of its line in `mLines`
    };

    // A text with what a set needs to find it: worked out once where two stages are asked.
    struct Wanted {
        const char* text;
        std::size_t shown;  // bytes up to the first NUL, all that a line contains
        long length;
        unsigned long long hash;
    };
    KYGL_LOCAL static Wanted wanted(const KyString& text);
    KYGL_LOCAL bool push(const Wanted& macro);
    KYGL_LOCAL bool remove(const Wanted& macro);
    KYGL_LOCAL long find(const Wanted& macro) const;
    KYGL_LOCAL bool isAt(long index, const Wanted& macro) const;
    KYGL_LOCAL long lineBegin(long index) const { return index > 0 ? mMacros[index - 1].end : 0; }

    // The same hashes in another order give another number. The last one can be taken out again:
    // the two multipliers are inverse to each other.
    ///@{
    static unsigned long long extend(unsigned long long fingerprint, unsigned long long hash) {
        const unsigned long long product = (fingerprint ^ (hash + 1)) * 0x9e3779b97f4a7c15ULL;
        return product << 32 | product >> 32;
    }
    static unsigned long long retract(unsigned long long fingerprint, unsigned long long hash) {
        const unsigned long long product = fingerprint << 32 | fingerprint >> 32;
        return (product * 0xf1de83e19937733dULL) ^ (hash + 1);
    }
    ///@}

    KyDArray<Macro> mMacros;
    KyDArray<char> mLines;                ///< what `getDefineMacros` returns
    unsigned long long mFingerprint = 0;  ///< of the first `mFingerprinted` macros
    long mFingerprinted = 0;
};

/// Same macros in the same order.
KYGL_API bool operator==(const KyShaderParametersMacros& a, const KyShaderParametersMacros& b);
