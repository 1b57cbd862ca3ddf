#pragma once

#include <kygl/containers/KyDArray.h>
#include <kygl/kyglApi.h>
#include <kygl/KyShaderMacro.h>
#include <kylib/KyString.h>

struct KyShaderBuildStage;
struct KyShaderExpansion;

/// One shader stage, made from one file and one macro set, valid in whatever GL context the caller
/// names.
///
/// A GL shader object belongs to one context and one macro set. A shader hides that: `compile` is
/// given the context at every use and returns a name that is valid there, compiling only when it
/// must.
///
/// - A direct shader holds one GL object. Another context or macro set replaces it.
/// - A caching shader holds none of its own. It owns a list of direct shaders, one for each macro
///   set and context that was ever used, and borrows the name of the matching one. Entries stay
///   until the shader dies.
///
/// A shader belongs to one thread at a time, and `compile` runs with the GL context of its argument
/// current; of these `KyDiagnostics` checks the context alone. GL objects are never deleted here:
/// they go to `KyDeferredDeleteMap` under their own context. Failure is the name 0; what is
/// reported is a GL error that is left over after a compile, and one of fetching its log.
/// Have GLSL checked first (`kyglGLSLAvailable`): without it a compile fails or does nothing, as
/// the driver pleases.
class KYGL_API KyShader {
public:
    /// Root of the shader tree: files are looked for in `mFolderPath` + "/share/shaders/" +
    /// folder + "/" + file. Empty at start; the application assigns it before any shader compiles.
    static KyString mFolderPath;

    /// Touches neither files nor GL.
    /// @param file name of the shader file, may hold subfolders
    /// @param folder folder below "/share/shaders/"
    /// @param caching the mode, for life
    KyShader(const KyString& file, const KyString& folder, bool caching);
    /// Lets go of the GL object as `deleteShader` does. Without memory for the queue the object
    /// stays in the GL until its context goes.
    virtual ~KyShader();
    KyShader(const KyShader&) = delete;
    KyShader& operator=(const KyShader&) = delete;

    /// The entry for the present macro set and `context`, made if need be; not compiled. Only for
    /// caching shaders. The entry belongs to this shader.
    virtual KyShader* getCachingShader(unsigned int context) = 0;

    /// 1 for a vertex shader, 0 for a fragment shader.
    virtual int getType() = 0;

    /// The GL name that is valid in `context`, or 0 after a failed compile. In the steady state
    /// three comparisons. A failed compile is tried again at every call.
    ///
    /// GL calls, when something has to be built: those of `kyglShaderGLSLCreateObject` and one
    /// error check, which reports what is left over.
    unsigned int compile(unsigned int context);

    /// The road of `compile` over the cache. Only for caching shaders.
    void compileCaching(unsigned int context);

    /// The text for the GL: one "#define" line for each macro, then the file with its includes
    /// expanded. The file is read the first time that it yields anything; later changes on disk
    /// are not seen by this object. Each entry of a cache reads for itself; those that read equal
    /// texts keep one copy together. A file that cannot be read gives the macro lines alone.
    ///
    /// `#include "name"` is replaced by the file `name` beside the top-level file, wherever the
    /// directive is, comments included; a file that cannot be read gives nothing, and neither does
    /// one that would include itself, directly or through others, without an end. Only regular
    /// files are read: a folder, a pipe or a device gives nothing at once.
    ///
    /// One expansion nests includes up to 64 deep, where a file is nested in the one that closes
    /// the quotes of its directive; it reads at most 65,536 files, the ones that are not there
    /// included, and at most 16 MiB. A file that does not fit into what is left of that counts as
    /// one that cannot be read and uses it up. Past a bound a directive is replaced by nothing and
    /// the expansion goes on.
    ///
    /// Throws `std::bad_alloc` when memory runs out, in the system as well. When the process or the
    /// system has no descriptor left (EMFILE, ENFILE), or on an input error (EIO), the file gives
    /// nothing, not even the part that was read, and this text is not kept: the next build reads
    /// again. A shader that compiled from such a text stays as it is until then.
    KyString loadFromFile();

    /// Lets go of the GL object. That of a direct shader is queued for deletion in its context; one
    /// that a caching shader borrowed stays with its entry.
    void deleteShader();

    /// The macro set. Changing it makes the shader stale; what was built stays until the next
    /// `compile`. A change that leaves the set as it was leaves the shader as it was, and the push
    /// and the removal of a macro return false.
    ///@{
    void setParameters(const KyShaderParametersMacros& macros);
    bool hasParameters(const KyShaderParametersMacros& macros) const;
    bool hasParameter(const KyString& macro) const;
    bool pushParameter(const KyString& macro);
    bool removeParameter(const KyString& macro);
    void clearParameters();
    ///@}

    /// Whether `compile(context)` would return at once: compiled, for this context and the present
    /// macro set.
    bool isCurrent(unsigned int context) const {
        return mIsUpToDate && mHasObject && mGLContext == context;
    }

    /// Whether this is a caching shader.
    bool isCaching() const { return mShaderCashing != nullptr; }

    /// The entries of a caching shader, in order of creation. The first entry with the wanted type,
    /// macro set and context is the one that counts.
    class KYGL_API KyShaderCashing {
    public:
        KyShaderCashing() = default;
        ~KyShaderCashing();
        KyShaderCashing(const KyShaderCashing&) = delete;
        KyShaderCashing& operator=(const KyShaderCashing&) = delete;

        /// The entry for these macros and this context, made if there is none. A new entry has no
        /// context yet: it is found again once it was compiled.
        ///@{
        KyShader* getVertexShader(const KyShaderParametersMacros& macros, unsigned int context,
                                  const KyString& file, const KyString& folder);
        KyShader* getFragmentShader(const KyShaderParametersMacros& macros, unsigned int context,
                                    const KyString& file, const KyString& folder);
        ///@}

        /// Destroys every entry.
        void clear();

    private:
        friend class KyShader;

        template <typename Shader>
        KYGL_LOCAL KyShader* findOrMake(int type, const KyShaderParametersMacros& macros,
                                        unsigned int context, const KyString& file,
                                        const KyString& folder);
        KYGL_LOCAL const KyString* share(const KyString& text);

        // A key of macro set and context for each entry decides a lookup nearly always. They are
        // side by side, so that a search over hundreds of entries stays in a few cache lines; entry
        // i keeps mKeys[i] up to date itself.
        KyDArray<KyShader*> mShaders;
        KyDArray<unsigned int> mKeys;
        KyDArray<KyString*> mSources;  ///< the different texts that the entries have read
    };

protected:
    bool mIsUpToDate = false;                   ///< `mId` was built from the present macro set
    bool mHasObject = false;                    ///< `mId` names a live GL object
    KyString mFileName;                         ///< as it was given
    KyString mFolderName;                       ///< as it was given
    KyShaderParametersMacros mParameters;       ///< the present macro set
    KyShaderCashing* mShaderCashing = nullptr;  ///< owned; null in direct mode
    KyString mSource;                           ///< the expanded file, empty until read
    unsigned int mId = 0;                       ///< means nothing while `mHasObject` is false
    unsigned int mGLContext = 0;                ///< of the last compile that had to look

private:
    friend class KyShaderProgram;
    friend class KyShaderTechnique;

    KYGL_LOCAL unsigned int bringUpToDate(unsigned int context);
    KYGL_LOCAL bool push(const KyShaderParametersMacros::Wanted& macro);
    KYGL_LOCAL bool remove(const KyShaderParametersMacros::Wanted& macro);
    KYGL_LOCAL void keepSource(const KyString& text);
    KYGL_LOCAL unsigned int build(unsigned int context);
    KYGL_LOCAL KyString load(bool keepsOrigins);
    KYGL_LOCAL KyShaderExpansion readFile(bool keepsOrigins) const;
    KYGL_LOCAL KyShaderBuildStage buildStage();
    KYGL_LOCAL void macrosChanged();
    KYGL_LOCAL void keyChanged();

    KyShaderCashing* mOwner = nullptr;  ///< the cache that this shader is an entry of, or null
    long mIndex = 0;                    ///< its place there
    const KyString* mSharedSource = nullptr;  ///< takes the place of `mSource` in an entry
};

/// A vertex shader.
class KYGL_API KyVertexShader : public KyShader {
public:
    /// As for `KyShader`.
    KyVertexShader(const KyString& file, const KyString& folder, bool caching);
    ~KyVertexShader() override;
    KyShader* getCachingShader(unsigned int context) override;
    int getType() override;
};

/// A fragment shader.
class KYGL_API KyFragmentShader : public KyShader {
public:
    /// As for `KyShader`.
    KyFragmentShader(const KyString& file, const KyString& folder, bool caching);
    ~KyFragmentShader() override;
    KyShader* getCachingShader(unsigned int context) override;
    int getType() override;
};
