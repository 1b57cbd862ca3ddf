#pragma once

#include <sogl/soglApi.h>
#include <sogl/SoGLEntryPoints.h>
#include <sogl/SoGLFlags.h>

#include <GL/gl.h>
#include <GL/glext.h>

/// @file
/// The GL loader: entry points and capability flags.
///
/// Every entry point is a plain writable global named `__glew` plus the GL name without its `gl`.
/// None is ever null, from the moment the library is loaded and whether or not a context has been
/// seen: one that the system's GL does not know reports itself once through `SoError::post`, does
/// nothing and gives 0. A program may put its own functions into the pointers while no other
/// thread calls through them.
extern "C" {
#define SOGL_DECLARE(Result, Name, Parameters) SOGL_API extern Result(*__glew##Name) Parameters;
SOGL_ENTRY_POINTS(SOGL_DECLARE)
#undef SOGL_DECLARE
}

/// The GL half of the loader.
namespace SoGLEW {

/// Fills every flag from the version and extension strings of the GL context that is current on
/// the calling thread, read through the pointers above. Extensions are read one by one where the
/// version is 3.0 or later and the driver counts any, and from the one long string otherwise.
/// Without a current context no flag is touched.
/// @param flags not null
/// @return 0, or 1 without a current context
SOGL_API unsigned int glewContextInit(GLEWContextStruct* flags);

}  // namespace SoGLEW

/// With these a source reads as plain GL, and so do the texts that are made from its calls.
///@{
#define glAttachObjectARB __glewAttachObjectARB
#define glAttachShader __glewAttachShader
#define glBindProgramARB __glewBindProgramARB
#define glBindTexture __glewBindTexture
#define glBitmap __glewBitmap
#define glBlendEquation __glewBlendEquation
#define glBlendEquationEXT __glewBlendEquationEXT
#define glBlendFunc __glewBlendFunc
#define glCallList __glewCallList
#define glCallLists __glewCallLists
#define glColor4fv __glewColor4fv
#define glCompileShader __glewCompileShader
#define glCompileShaderARB __glewCompileShaderARB
#define glCreateProgram __glewCreateProgram
#define glCreateProgramObjectARB __glewCreateProgramObjectARB
#define glCreateShader __glewCreateShader
#define glCreateShaderObjectARB __glewCreateShaderObjectARB
#define glDeleteBuffers __glewDeleteBuffers
#define glDeleteLists __glewDeleteLists
#define glDeleteObjectARB __glewDeleteObjectARB
#define glDeleteProgram __glewDeleteProgram
#define glDeleteTextures __glewDeleteTextures
#define glEnable __glewEnable
#define glEndList __glewEndList
#define glGenLists __glewGenLists
#define glGenProgramsARB __glewGenProgramsARB
#define glGenTextures __glewGenTextures
#define glGetActiveUniform __glewGetActiveUniform
#define glGetAttribLocation __glewGetAttribLocation
#define glGetError __glewGetError
#define glGetInfoLogARB __glewGetInfoLogARB
#define glGetIntegerv __glewGetIntegerv
#define glGetObjectParameterivARB __glewGetObjectParameterivARB
#define glGetProgramInfoLog __glewGetProgramInfoLog
#define glGetProgramiv __glewGetProgramiv
#define glGetShaderInfoLog __glewGetShaderInfoLog
#define glGetShaderiv __glewGetShaderiv
#define glGetString __glewGetString
#define glGetStringi __glewGetStringi
#define glGetUniformLocation __glewGetUniformLocation
#define glIsProgram __glewIsProgram
#define glLinkProgram __glewLinkProgram
#define glLinkProgramARB __glewLinkProgramARB
#define glListBase __glewListBase
#define glNewList __glewNewList
#define glPixelStorei __glewPixelStorei
#define glPopAttrib __glewPopAttrib
#define glProgramStringARB __glewProgramStringARB
#define glPushAttrib __glewPushAttrib
#define glRasterPos3f __glewRasterPos3f
#define glShaderSource __glewShaderSource
#define glShaderSourceARB __glewShaderSourceARB
#define glTexImage1D __glewTexImage1D
#define glUniform1f __glewUniform1f
#define glUniform1i __glewUniform1i
#define glUseProgram __glewUseProgram
///@}
