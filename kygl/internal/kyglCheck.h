#pragma once

#include <kygl/kygl.h>
#include <sogl/SoGLEW.h>

/// The error check as the library's own sources use it: the call is written once, and its text, its
/// line and the path of its source (`kSource`, which each source defines) are derived from it.
///
///     const KyResult outcome = KYGL_CHECKED(glLinkProgram(inProgram), 1);
///
/// The texts are made by the preprocessor from the call as it stands, so the macros of `SoGLEW.h`
/// do not show in them. That holds only where the macro is not an argument of another one.
#define KYGL_CHECKED(call, mode) ((call), kyglCheckInline(#call, kSource, __LINE__, mode))

/// The check that closes a group of calls.
#define KYGL_CHECK_GROUP(mode) kyglCheckInline("", kSource, __LINE__, mode)

/// What happens behind the first error flag, `first`: drains the others, makes the result and
/// reports it. Out of line, so that a call site holds one comparison and no more.
[[gnu::cold]] KyResult kyglErrorFound(GLenum first, const char* command, const char* file,
                                      unsigned int line, int mode);

inline KyResult kyglCheckInline(const char* command, const char* file, unsigned int line,
                                int mode) {
    const GLenum first = glGetError();
    if (first != GL_NO_ERROR) return kyglErrorFound(first, command, file, line, mode);
    return KyResult();
}
