#pragma once

#include <kygl/kyglApi.h>
#include <kylib/KyResult.h>
#include <kylib/KyString.h>

/// @file
/// From GLSL text to GL shader and program objects.
///
/// Free functions without state; they know nothing of files, macros or caches. All take effect in
/// the GL context that is current on the calling thread, which any thread may be. Every operation
/// exists twice with one behaviour: the plain name uses the entry points of the ARB object
/// extensions, the name with a 2 those of the core. The two sets are never mixed.
///
/// Every name that is written to an output belongs to the caller; nothing is ever deleted here.
/// The shader object of a failed compile stays in the GL, and its name is not handed out. A GL
/// error at a step ends the function with that error as result; `kyglErrorCheck` states its form.

/// Whether the current context can run GLSL, from the toolkit's flags: no GL call once the toolkit
/// knows the context. False without a current context.
KYGL_API bool kyglShaderGLSLAvailable();

/// Compiles one shader object.
/// @param source the text, up to its closing NUL
/// @param outShader the compiled shader, or 0 after any failure
/// @param inIsVertexShader non-zero for a vertex shader, 0 for a fragment shader
/// @return success; code 1 and the message "Shader Error: " with the GL's log when the text is
///     refused; or the GL error of a step
///@{
KYGL_API KyResult kyglShaderGLSLCreateObject(const KyString& source, unsigned int& outShader,
                                             int inIsVertexShader);
KYGL_API KyResult kyglShaderGLSLCreateObject2(const KyString& source, unsigned int& outShader,
                                              int inIsVertexShader);
///@}

/// Makes a program with its shaders compiled and attached, not yet linked. Errors that were pending
/// are notified and cleared first.
/// @param vertexSource,fragmentSource read only if their stage is asked for
/// @param ioV,ioF the new shaders; null leaves that stage out. Only written, never read first
/// @param ioP the new program; null makes nothing and gives code 1
/// @return success, or the first failure. What was made before it stays in the outputs: the
///     program, and the vertex shader when the fragment stage failed
///@{
KYGL_API KyResult kyglShaderGLSLPrepareProgram(const KyString& vertexSource,
                                               const KyString& fragmentSource, unsigned int* ioV,
                                               unsigned int* ioF, unsigned int* ioP);
KYGL_API KyResult kyglShaderGLSLPrepareProgram2(const KyString& vertexSource,
                                                const KyString& fragmentSource, unsigned int* ioV,
                                                unsigned int* ioF, unsigned int* ioP);
///@}

/// Links a program, also one that is linked already. A GL error of the link itself is notified; the
/// link status alone decides the result. A GL that stores no status, as for a name that is no
/// program, makes the plain form a failure and the form with a 2 a success.
/// @return success, or code 1 with its place, the message "Shader Error: " and the GL's log
///@{
KYGL_API KyResult kyglShaderGLSLLinkProgram(unsigned int inProgram);
KYGL_API KyResult kyglShaderGLSLLinkProgram2(unsigned int inProgram);
///@}

/// Fetches a program's log. Errors that were pending are notified and cleared first.
/// @param outLog replaced by the log, of whatever length. The array has the size that the GL
///     reports and one byte more, so `length` may count a NUL that the GL counted: read it by
///     `dataPtr`
/// @return the result of the fetch
///@{
KYGL_API KyResult kyglShaderGLSLGetProgramsInfoLog(unsigned int inProgram, KyString& outLog);
KYGL_API KyResult kyglShaderGLSLGetProgramsInfoLog2(unsigned int inProgram, KyString& outLog);
///@}
