#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/kyglApi.h>
#include <kygl/KyShaderUniform.h>
#include <kylib/KyString.h>

class KyResult;
class KyShader;
class KyShaderKeptUniforms;

/// A vertex and a fragment shader, linked into a GL program for one context at a time, with the
/// uniforms that go with them.
///
/// With two caching shaders a technique caches as well: it keeps one linked program for each pair
/// of compiled shaders and each context, and finds it again. Otherwise it holds one program and
/// links anew whenever a macro, a shader or the context changes.
///
/// The shaders are borrowed. They must outlive the technique, those that were replaced as well, and
/// serve this technique alone: it learns of a change by finding a shader not current. A technique
/// belongs to one thread at a time, and whatever reaches the GL runs with the context of its
/// argument current, which only `KyDiagnostics` checks. Programs are never deleted here: they go to
/// `KyDeferredDeleteMap` under their context.
class KYGL_API KyShaderTechnique {
public:
    /// Touches neither files nor GL. Either shader may be null; nothing compiles until both are
    /// there.
    KyShaderTechnique(KyShader* vertexShader, KyShader* fragmentShader);
    /// Lets go of the programs. Without memory for the queue they stay in the GL until their
    /// context goes.
    ~KyShaderTechnique();
    KyShaderTechnique(const KyShaderTechnique&) = delete;
    KyShaderTechnique& operator=(const KyShaderTechnique&) = delete;

    /// Replaces a shader. The old program stays until the next `compile`.
    ///@{
    void setVertexShader(KyShader* shader);
    void setFragmentShader(KyShader* shader);
    ///@}

    /// Whether this technique keeps its programs in a cache.
    bool isCashing() const;

    /// Brings the program up to date for `context`. In the steady state a few comparisons, no GL
    /// call, no allocation and no lock.
    ///
    /// A failed link writes one line with the driver's log to standard output, at every attempt; a
    /// failed compile writes nothing. Failures are not cached: the next call tries again, and a
    /// caching technique compiles a stage that fails twice in each. Each such call leaves objects
    /// in the GL that nobody deletes: a shader object for each attempt at a stage that does not
    /// compile, a program for a failed link. A caching technique keeps the fields of its last
    /// success, so the last good program stays in use, even if it was built for another context.
    /// When memory runs out, `std::bad_alloc` passes and the next call builds again; a program that
    /// was made by then is queued for deletion, at once or when the queue has memory for it.
    /// @return whether there is a program for `context` now
    bool compile(unsigned int context);

    /// The road of `compile` over the cache. Only where `isCashing` holds.
    bool compileCashing(unsigned int context);

    /// Compiles, puts the program in use and sends every uniform; without a program, puts none in
    /// use. GL calls in the steady state: `glUseProgram`, those of
    /// `KyShaderParametersUniform::activate`, and an error check after each. In the technique of a
    /// `KyShaderProgram` its `setUniformMode` can save calls.
    void apply(unsigned int context);

    /// Puts no program in use: `glUseProgram` and an error check.
    void unUse();

    /// Whether the GL knows the program's name, by `glIsProgram` and an error check. True does not
    /// mean that the program is in use.
    bool isApplied();

    /// Sends one uniform at once to the program, which must be in use. GL calls: those of
    /// `isApplied`, then those of `KyShaderUniform::activate`.
    /// @return false for null, without a program, or when the program has no such uniform
    bool applyUniform(KyShaderUniform* uniform);

    /// Asks by `glGetAttribLocation` and an error check.
    /// @return location of the attribute, or -1 without an up-to-date program or such an attribute
    int getAttribLocation(const KyString& location);

    /// Lets go of the program. One that this technique linked itself is queued for deletion in its
    /// context; one that it found in its cache stays there.
    void deleteTechnique();

    /// The uniforms that `apply` sends.
    KyShaderParametersUniform& uniforms() { return mUniformParameters; }

    /// The linked programs of a technique, in order of creation. Entries stay until it dies.
    class KYGL_API KyTechniqueCaching {
    public:
        KyTechniqueCaching() = default;
        ~KyTechniqueCaching();
        KyTechniqueCaching(const KyTechniqueCaching&) = delete;
        KyTechniqueCaching& operator=(const KyTechniqueCaching&) = delete;

        /// Destroys every entry.
        void clear();

        /// The entry for these shaders as they are now and this context, built if need be.
        /// @return null for a null shader or when the build failed
        KyShaderTechnique* getTechnique(KyShader* vertex, KyShader* fragment, unsigned int context);

    private:
        // Into room that there is.
        KYGL_LOCAL void append(KyShaderTechnique* technique, unsigned int vertexId,
                               unsigned int fragmentId);

        // Index i of all three is one entry. The GL names of its shaders identify their macro
        // sets: a shader has one name for each set and context.
        KyDArray<KyShaderTechnique*> mTechniques;
        KyDArray<unsigned int> mVertexIds;
        KyDArray<unsigned int> mFragmentIds;
    };

private:
    friend class KyShaderProgram;

    KYGL_LOCAL void judge(const char* operation, unsigned int context, bool takesId);
    KYGL_LOCAL void applyJudged(unsigned int context);
    KYGL_LOCAL void judgeUniforms();
    KYGL_LOCAL void compareUniforms();
    KYGL_LOCAL void use(bool isThere);
    KYGL_LOCAL bool isBuilt(unsigned int context) const;
    KYGL_LOCAL bool build(unsigned int context);
    KYGL_LOCAL void keepUniforms(bool locations, bool values);
    KYGL_LOCAL void forgetSent();
    KYGL_LOCAL void sendUniforms();
    KYGL_LOCAL bool makeRoomToKeep() noexcept;
    KYGL_LOCAL bool findOrBuild(unsigned int context);
    KYGL_LOCAL bool findOrBuildObserved(unsigned int context);
    KYGL_LOCAL bool link(unsigned int context);
    KYGL_LOCAL KyResult makeProgram(unsigned int iov, unsigned int iof);
    KYGL_LOCAL void letGoOfProgram() noexcept;

    KyShader* mFragmentShader;    ///< borrowed
    KyShader* mVertexShader;      ///< borrowed
    unsigned int mProgram = 0;    ///< linked here, or a cache entry's
    unsigned int mGLContext = 0;  ///< the context that `mProgram` belongs to
    bool mHasProgram = false;     ///< there is a program to delete or to use
    bool mIsUpToDate = false;     ///< it still matches the shaders
    bool mUseCashing = true;      ///< false on cache entries
    bool mOwnsProgram = false;    ///< `mProgram` was linked here and is queued from here
    bool mBuildFailed = false;    ///< what is in the fields is of an older success: build again
    KyShaderParametersUniform mUniformParameters;
    KyTechniqueCaching mTechniqueCashing;
    bool mKeepsLocations = false;           ///< of uniforms, for each program in the cache
    bool mKeepsValues = false;              ///< likewise, to send only what changed
    KyShaderTechnique* mEntry = nullptr;    ///< the cache entry that `mProgram` is of
    KyShaderKeptUniforms* mKept = nullptr;  ///< owned, of cache entries: what `mProgram` holds
    unsigned long mJudgedIn = 0;  ///< when the uniforms of `mProgram` were compared with the set's
    unsigned long mJudged = 0;    ///< and which names there were
};
