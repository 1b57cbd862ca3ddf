#pragma once

#include <kygl/KyShader.h>

/// Takes the time of one build and tells the observer of it. Does nothing without one.
class KYGL_LOCAL KyShaderBuildReport {
public:
    KyShaderBuildReport();

    /// @param vertex,fragment the stages of the build; null for one that it leaves out
    void tell(const KyShader* vertex, const KyShader* fragment, unsigned int context,
              const KyResult& result) const;

private:
    KyShader::BuildObserver mObserver;
    std::chrono::steady_clock::time_point mStart;
};
