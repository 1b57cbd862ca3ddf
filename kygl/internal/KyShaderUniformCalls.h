#pragma once

#include "kyglCheck.h"

#include <kygl/KyShaderUniform.h>

/// The GL calls of a uniform, inline for the loops that send all uniforms of a program.
namespace kyglUniformCalls {
constexpr char kSource[] = "internal/KyShaderUniform";
}

/// @return whether the check found no error; the location counts in any case
inline bool KyShaderUniform::locate(unsigned int program, int& shaderLocation) const {
    using kyglUniformCalls::kSource;
    return KYGL_CHECKED(shaderLocation = glGetUniformLocation(program, mName.dataPtr()), 0).ok();
}

/// @return whether the check found no error
inline bool KyShaderUniform::send(int shaderLocation) {
    using kyglUniformCalls::kSource;
    return KYGL_CHECKED(setUniform(shaderLocation), 1).ok();
}
