#pragma once

#include <kygl/kyglApi.h>
#include <kylib/KyString.h>

class KyShader;
class KyShaderParametersMacros;
class KyShaderTechnique;
class KyShaderUniform;

/// A pair of shader files with their macros and uniforms: what a rendering module holds.
///
///     KyShader::mFolderPath = "/opt/viewer";                    // once, by the application
///     KyShaderProgram program;
///     program.create("relief.vert", "relief.frag", "terrain");  // no file, no GL yet
///     program.pushMacro("CONTOURS");
///     program.setUniform("height", 2.5f);
///
///     program.apply(3);                       // context 3 is current; builds on first use
///     ... draw ...
///     program.applyUniform("height", 3.0f);   // between apply and unUse: at once
///     ... draw ...
///     program.unUse();
///
/// Each macro set and context is built once, when it is first applied, and found from then on. The
/// program owns its two shaders and its technique; what they built goes to `KyDeferredDeleteMap`
/// when the program dies, on whatever thread that happens.
///
/// A program belongs to one thread at a time. `compile` and `apply` run with the GL context of
/// their argument current, which only `KyDiagnostics` checks. Failure is `false`, null or -1, and a
/// failed link writes a line to standard output; only GL errors around a build and of the value of
/// a uniform are reported. A GL error that the application left pending before a stage is compiled
/// is taken for an error of that stage, silently: it costs one attempt, made again within the same
/// call, and the shader object of that attempt. Where only a link is missing it is reported as an
/// error of the link. `KyDiagnostics` finds it before that. Before `create`, and after
/// `deleteProgram`, each operation except `unUse` returns the value that it has for failure and
/// does nothing else.
class KYGL_API KyShaderProgram {
public:
    KyShaderProgram() = default;
    ~KyShaderProgram();
    KyShaderProgram(const KyShaderProgram&) = delete;
    KyShaderProgram& operator=(const KyShaderProgram&) = delete;

    /// Names the shader files: `KyShader::mFolderPath` + "/share/shaders/" + folder + "/" + file.
    /// What an earlier `create` made is deleted first, its macros and uniforms too. When memory
    /// runs out `std::bad_alloc` passes and everything is as before.
    void create(const KyString& vertexFile, const KyString& fragmentFile, const KyString& folder);

    /// Lets go of everything; what was built is queued for deletion. Doing it twice does nothing.
    void deleteProgram();

    /// Adds one macro to one shader or to both, fragment shader first.
    /// @return whether that shader's set changed; `pushMacro` returns it of the vertex shader alone
    ///@{
    bool pushVertexMacro(const KyString& macro);
    bool pushFragmentMacro(const KyString& macro);
    bool pushMacro(const KyString& macro);
    ///@}

    /// Removes one macro from one shader or from both, fragment shader first.
    /// @return whether that shader's set changed; `removeMacro` returns it of the vertex one alone
    ///@{
    bool removeVertexMacro(const KyString& macro);
    bool removeFragmentMacro(const KyString& macro);
    bool removeMacro(const KyString& macro);
    ///@}

    /// Replaces the macro set of one shader or of both by a copy of `macros`. Here as with the
    /// macros above, running out of memory between the two shaders leaves the fragment shader
    /// changed and the vertex shader as it was.
    ///@{
    void setVertexParameter(const KyShaderParametersMacros& macros);
    void setFragmentParameter(const KyShaderParametersMacros& macros);
    void setParameter(const KyShaderParametersMacros& macros);
    ///@}

    /// Stores a uniform, which `apply` sends as the mode of `setUniformMode` specifies.
    /// @return the uniform, which belongs to the program and lives until `create`, `deleteProgram`
    ///     or the program's end; null when the name holds the other type
    ///@{
    KyShaderUniform* setUniform(const KyString& name, float value);
    KyShaderUniform* setUniform(const KyString& name, int value);
    ///@}

    /// How `apply` sends the uniforms. After each `apply` every program object holds the same
    /// values in all modes, and each call has its error check in all modes.
    enum class UniformMode {
        /// Each uniform is looked up by name and sent.
        ByName,
        /// Each uniform is sent. Its location is asked for once for each program that is built; a
        /// name that the program lacks is not asked for again. A lookup whose check found an error
        /// is not kept.
        KeptLocations,
        /// As `KeptLocations`, and a value is sent only if its bits differ from those last sent to
        /// that program. What the program holds is unknown, and sent again, where a check found an
        /// error, and for a uniform at the location of one that this or any other program has sent
        /// by `applyUniform` or `KyShaderUniform::activate`: the library does not ask which program
        /// was in use. After a uniform was sent by GL calls of the application's own, or by
        /// `KyShaderUniform::setUniform`, the next `apply` needs a `forgetSent` before it.
        ChangesOnly,
    };
    /// Sets the mode, `ByName` at the start. It may be set before `create`, survives it, and may
    /// change at any time. Makes no GL call.
    ///
    /// A program that was built, as long as it lives, takes 48 bytes and 16 for each uniform in the
    /// modes that keep something, allocated when it is first applied in such a mode and when
    /// uniforms were added. Without memory for that `apply` sends by name.
    void setUniformMode(UniformMode mode);

    /// Nothing counts as sent any more, in none of the programs that this object has built: each of
    /// them gets every uniform at its next `apply`.
    void forgetSent();

    /// Stores a uniform and sends it at once, in all modes, to the program that must be in use. GL
    /// calls: `glIsProgram`, then those of `KyShaderUniform::activate`, without the lookup if the
    /// location is kept.
    /// @return true when it was sent; false when it is only stored, when the program has no such
    ///     uniform, or when the name holds the other type
    ///@{
    bool applyUniform(const KyString& name, float value);
    bool applyUniform(const KyString& name, int value);
    ///@}

    /// Asks by `glGetAttribLocation` and an error check.
    /// @return location of a vertex attribute in the program last built or found, or -1
    int getAttribLocation(const KyString& location);

    /// Builds or finds the program for the present macros and `context`. @return success
    bool compile(unsigned int context);

    /// `compile`, then puts the program in use and sends the uniforms as the mode of
    /// `setUniformMode` specifies. In the steady state it allocates nothing, takes no lock and
    /// calls the GL only to use the program and to send the uniforms. After a failure the last good
    /// program of this object is put in use, even if it was built for another context, or none if
    /// there never was one, and every uniform is sent by name: ask `compile` first where that
    /// matters.
    void apply(unsigned int context);

    /// Whether the GL knows the program, by `glIsProgram` and an error check. True does not mean
    /// that the program is in use.
    bool isApplied();

    /// Puts no program in use, whatever the state of this object.
    void unUse();

    /// Adds the macro "ENABLE_CLIPVERTEX", which a shader file that can clip tests for, unless the
    /// variable NO_CLIP_PLANE is set in the environment. Hand the set to `setParameter` or one of
    /// its siblings.
    static void enableClipPlane(KyShaderParametersMacros& macros);

private:
    KyShader* mVertexShader = nullptr;        ///< owned
    KyShader* mFragmentShader = nullptr;      ///< owned
    KyShaderTechnique* mTechnique = nullptr;  ///< owned
    KyString mFolderName;                     ///< the folder of the last `create`
    UniformMode mUniformMode = UniformMode::ByName;
};
