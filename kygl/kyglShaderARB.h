#pragma once

#include <kygl/kyglApi.h>
#include <kylib/KyResult.h>
#include <kylib/KyString.h>

/// @file
/// From ARB assembly text to vertex and fragment programs.
///
/// Free functions without state. All take effect in the GL context that is current on the calling
/// thread, which any thread may be. Every name that is written to an output belongs to the caller;
/// nothing is ever deleted, enabled or unbound here, and there is no link step. A program stays
/// bound to its target after the call. Wording a failure allocates; if `std::bad_alloc` passes, the
/// output at hand holds the name that was generated, if any, and later outputs keep their value.

/// Whether the current context can load assembly programs, from the toolkit's flags: no GL call
/// once the toolkit knows the context. False without a current context.
KYGL_API bool kyglShaderARBAvailable();

/// Loads one program and leaves it bound.
///
/// A text that the GL rejects is notified with the line of the fault and the GL's message, and in
/// no other way: the result is success, and the output holds the name. The line is that of
/// GL_PROGRAM_ERROR_POSITION_ARB, which in Mesa lags by some bytes: a fault at the very start of a
/// line can be reported with the line before, while the message has the right one.
/// @param source the text, without its closing NUL
/// @param outProgram the program's name, or 0 after a GL error. If that is an error of binding it,
///     the generated name stays in the GL and is not handed out
/// @param inIsVertexProgram non-zero for a vertex program, 0 for a fragment program
/// @return success, or the GL error of the steps before the text is handed over
KYGL_API KyResult kyglShaderARBCreateObject(const KyString& source, unsigned int& outProgram,
                                            int inIsVertexProgram);

/// Loads a vertex and a fragment program. Errors that were pending are notified and cleared first.
/// @param vertexSource,fragmentSource read only if their stage is asked for
/// @param ioV,ioF the new programs; null leaves that stage out. Only written, never read
/// @return success, or the first failure, which is reported as unexpected as well; a failed vertex
///     stage skips the fragment stage. The program of a stage that succeeded stays in its output
KYGL_API KyResult kyglShaderARBPrepareProgram(const KyString& vertexSource,
                                              const KyString& fragmentSource, unsigned int* ioV,
                                              unsigned int* ioF);
