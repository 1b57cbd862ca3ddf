#pragma once

#include "KyDiagnosis.h"
#include "KyShaderBuildRecord.h"

#include <kygl/KyShaderUniform.h>

#include <vector>

/// Compares the uniforms that a technique keeps with those that its program has, and reports to
/// `KyDiagnostics` the names that it lacks and the types that do not fit.
class KYGL_LOCAL KyShaderUniformDiagnosis {
public:
    /// @param program linked in `context`, which is current
    KyShaderUniformDiagnosis(const KyShaderParametersUniform& uniforms, unsigned int program,
                             unsigned int context, const KyShaderBuildStage& vertex,
                             const KyShaderBuildStage& fragment)
        : mUniforms(uniforms),
          mProgram(program),
          mContext(context),
          mVertex(vertex),
          mFragment(fragment) {}

    /// GL calls: `glGetProgramiv` twice, `glGetActiveUniform` for each uniform of the program, and
    /// an error check; on an error nothing is reported. Throws `std::bad_alloc`.
    void run();

private:
    struct Active {
        std::string name;  // without an index at the end
        unsigned int type;
    };

    bool askForActive();
    void judge(const KyShaderUniform& uniform) const;
    void reportMissing(const std::string& name) const;
    void reportType(const KyShaderUniform& uniform, unsigned int declared) const;
    void report(const std::string& name, KyFinding::Message&& message) const;
    KyShaderPlace declaration(const std::string& name) const;
    std::string advice(const std::string& name) const;

    const KyShaderParametersUniform& mUniforms;
    unsigned int mProgram;
    unsigned int mContext;
    const KyShaderBuildStage& mVertex;
    const KyShaderBuildStage& mFragment;
    std::vector<Active> mActive;
};
