#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/kyglApi.h>
#include <kylib/KyString.h>

#include <cstring>

/// A named scalar on the CPU side that is sent to whatever program is in use.
///
/// It is held by name, not by location: the location is looked up in the given program at each
/// activation, and a program without the name is no error. A uniform belongs to one thread at a
/// time.
class KYGL_API KyShaderUniform {
public:
    /// Copies the name, which is for life.
    explicit KyShaderUniform(const KyString& name);
    virtual ~KyShaderUniform();
    KyShaderUniform(const KyShaderUniform&) = delete;
    KyShaderUniform& operator=(const KyShaderUniform&) = delete;

    /// Sends the value to a location of the program in use. Does nothing here.
    virtual void setUniform(int location);

    /// Whether the other holds an equal value of the same type; the names play no part. False here
    /// and for null.
    virtual bool isEqual(const KyShaderUniform* other) const;

    /// Looks the name up in `program`, which must be in use, and sends the value. Allocates nothing
    /// and takes no lock. What is known of the value at this location is forgotten for every
    /// program in the mode `KyShaderProgram::UniformMode::ChangesOnly`: any of them may be in use.
    ///
    /// GL calls: `glGetUniformLocation`, `glUniform1f` or `glUniform1i` if the program has the
    /// name, and an error check after each. An error of the lookup is dropped; one of the value,
    /// such as a type that does not fit, is notified.
    /// @return false when the program has no such uniform
    bool activate(unsigned int program);

    /// The name in the shader's source.
    const KyString& name() const { return mName; }

protected:
    KyString mName;  ///< what `name` gives

    /// The types of values that a set holds.
    enum class Type : unsigned char { Other, Int, Float };
    /// Copies the name.
    KyShaderUniform(const KyString& name, Type type);
    /// The bits of a value.
    template <typename Value>
    static unsigned int bitsOf(Value value) {
        static_assert(sizeof value == sizeof(unsigned int));
        unsigned int bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }
    /// Replaces a value. @return whether its bits differ, as those of equal floats may
    template <typename Value>
    static bool replace(Value& held, Value value) {
        const bool differs = bitsOf(held) != bitsOf(value);
        held = value;
        return differs;
    }
    /// Counts a change in the set that the uniform belongs to, if there is one.
    void valueChanged() {
        if (mChanges != nullptr) ++*mChanges;
    }

private:
    friend class KyShaderKeptUniforms;
    friend class KyShaderParametersUniform;
    friend class KyShaderTechnique;
    friend class KyShaderUniformDiagnosis;

    KYGL_LOCAL bool activateAt(int shaderLocation);
    KYGL_LOCAL bool locate(unsigned int program, int& shaderLocation) const;
    KYGL_LOCAL bool send(int shaderLocation);
    KYGL_LOCAL unsigned int bits() const;

    // The type comes last, so that it shares a word with the value of a derived class.
    unsigned long long* mChanges = nullptr;  ///< the set's count of changes; null outside a set
    Type mType = Type::Other;
};

/// Same name and equal values of the same type.
KYGL_API bool operator==(const KyShaderUniform& a, const KyShaderUniform& b);

/// A whole number.
class KYGL_API KyShaderUniformInt : public KyShaderUniform {
public:
    /// Copies the name.
    KyShaderUniformInt(const KyString& name, int value);
    ~KyShaderUniformInt() override;
    void setUniform(int location) override;
    bool isEqual(const KyShaderUniform* other) const override;

    /// Changes the value; the next activation sends it.
    void setValue(int value) {
        if (replace(mValue, value)) valueChanged();
    }

private:
    friend class KyShaderUniform;
    friend class KyShaderParametersUniform;
    static constexpr Type kType = Type::Int;

    int mValue;
};

/// A floating-point number. Values are equal as floats are: a NaN equals nothing.
class KYGL_API KyShaderUniformFloat : public KyShaderUniform {
public:
    /// Copies the name.
    KyShaderUniformFloat(const KyString& name, float value);
    ~KyShaderUniformFloat() override;
    void setUniform(int location) override;
    bool isEqual(const KyShaderUniform* other) const override;

    /// Changes the value; the next activation sends it.
    void setValue(float value) {
        if (replace(mValue, value)) valueChanged();
    }

private:
    friend class KyShaderUniform;
    friend class KyShaderParametersUniform;
    static constexpr Type kType = Type::Float;

    float mValue;
};

/// The uniforms of a technique, in the order in which their names were first set.
///
/// The set owns its uniforms; a pointer that it hands out is valid until that uniform is removed or
/// the set cleared or destroyed. No two have the same name, and a name keeps its type while it is
/// in the set. Lookups are linear, but names that are set in the order of the set are found at
/// once. A set belongs to one thread at a time. A failed allocation throws `std::bad_alloc` and
/// leaves the set as it was.
class KYGL_API KyShaderParametersUniform {
public:
    KyShaderParametersUniform() = default;
    ~KyShaderParametersUniform();
    KyShaderParametersUniform(const KyShaderParametersUniform&) = delete;
    KyShaderParametersUniform& operator=(const KyShaderParametersUniform&) = delete;

    /// Removes every uniform; the storage stays.
    void clear();

    /// Looks a name up. @return the uniform of that name, or null
    KyShaderUniform* getUniform(const KyString& name) const;
    /// Whether a uniform of that name is in the set.
    bool hasUniform(const KyString& name) const;

    /// Sets a value, adding the uniform at the end if the name is new.
    /// @return the uniform, or null, and no change, when the name holds the other type
    ///@{
    KyShaderUniform* setUniform(const KyString& name, float value);
    KyShaderUniform* setUniform(const KyString& name, int value);
    ///@}

    /// Removes a uniform; the others keep their order. @return whether it was there
    bool removeUniform(const KyString& name);

    /// Activates every uniform in order; those that `program` lacks are skipped.
    void activate(unsigned int program);

private:
    friend class KyShaderKeptUniforms;
    friend class KyShaderTechnique;
    friend class KyShaderUniformDiagnosis;
    friend bool operator==(const KyShaderParametersUniform&, const KyShaderParametersUniform&);
    KYGL_LOCAL void send(unsigned int program) const;
    KYGL_LOCAL long find(const KyString& name) const;
    template <typename Uniform, typename Value>
    KYGL_LOCAL KyShaderUniform* set(const KyString& name, Value value);
    template <typename Uniform, typename Value>
    KYGL_LOCAL KyShaderUniform* setOther(const KyString& name, Value value);
    template <typename Uniform, typename Value>
    KYGL_LOCAL KyShaderUniform* setAt(long index, Value value);

    KyDArray<KyShaderUniform*> mUniforms;
    long mNext = 0;                   ///< after the last one set: where the next one is tried first
    unsigned long long mChanges = 0;  ///< of values and of the list
    unsigned long long mForgotten = 0;  ///< `mChanges` when all that was sent ceased to count
    unsigned long mListed = 0;          ///< counts the names that came and went
};

/// Equal uniforms in the same order.
KYGL_API bool operator==(const KyShaderParametersUniform& a, const KyShaderParametersUniform& b);
