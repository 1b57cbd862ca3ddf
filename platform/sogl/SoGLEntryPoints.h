#pragma once

/// The one list of GL entry points: `X` gets result, name without `gl` and parameters of each.
///
/// `SoGLEW.h` declares a pointer for each; `SoGLEW.cpp` defines and fills them; tests make a
/// recorder for each.
// clang-format off
#define SOGL_ENTRY_POINTS(X) \
    X(void,           AttachObjectARB,         (GLhandleARB program, GLhandleARB shader)) \
    X(void,           AttachShader,            (GLuint program, GLuint shader)) \
    X(void,           BindProgramARB,          (GLenum target, GLuint program)) \
    X(void,           BindTexture,             (GLenum target, GLuint texture)) \
    X(void,           Bitmap,                  (GLsizei width, GLsizei height, GLfloat xorig, GLfloat yorig, GLfloat xmove, GLfloat ymove, const GLubyte* bitmap)) \
    X(void,           BlendEquation,           (GLenum mode)) \
    X(void,           BlendEquationEXT,        (GLenum mode)) \
    X(void,           BlendFunc,               (GLenum sfactor, GLenum dfactor)) \
    X(void,           CallList,                (GLuint list)) \
    X(void,           CallLists,               (GLsizei n, GLenum type, const void* lists)) \
    X(void,           Color4fv,                (const GLfloat* v)) \
    X(void,           CompileShader,           (GLuint shader)) \
    X(void,           CompileShaderARB,        (GLhandleARB shader)) \
    X(GLuint,         CreateProgram,           (void)) \
    X(GLhandleARB,    CreateProgramObjectARB,  (void)) \
    X(GLuint,         CreateShader,            (GLenum type)) \
    X(GLhandleARB,    CreateShaderObjectARB,   (GLenum type)) \
    X(void,           DeleteBuffers,           (GLsizei n, const GLuint* buffers)) \
    X(void,           DeleteLists,             (GLuint list, GLsizei range)) \
    X(void,           DeleteObjectARB,         (GLhandleARB object)) \
    X(void,           DeleteProgram,           (GLuint program)) \
    X(void,           DeleteTextures,          (GLsizei n, const GLuint* textures)) \
    X(void,           Enable,                  (GLenum cap)) \
    X(void,           EndList,                 (void)) \
    X(GLuint,         GenLists,                (GLsizei range)) \
    X(void,           GenProgramsARB,          (GLsizei n, GLuint* programs)) \
    X(void,           GenTextures,             (GLsizei n, GLuint* textures)) \
    X(void,           GetActiveUniform,        (GLuint program, GLuint index, GLsizei room, GLsizei* length, GLint* size, GLenum* type, GLchar* name)) \
    X(GLint,          GetAttribLocation,       (GLuint program, const GLchar* name)) \
    X(GLenum,         GetError,                (void)) \
    X(void,           GetInfoLogARB,           (GLhandleARB object, GLsizei maxLength, GLsizei* length, GLcharARB* log)) \
    X(void,           GetIntegerv,             (GLenum pname, GLint* params)) \
    X(void,           GetObjectParameterivARB, (GLhandleARB object, GLenum pname, GLint* params)) \
    X(void,           GetProgramInfoLog,       (GLuint program, GLsizei bufSize, GLsizei* length, GLchar* log)) \
    X(void,           GetProgramiv,            (GLuint program, GLenum pname, GLint* params)) \
    X(void,           GetShaderInfoLog,        (GLuint shader, GLsizei bufSize, GLsizei* length, GLchar* log)) \
    X(void,           GetShaderiv,             (GLuint shader, GLenum pname, GLint* params)) \
    X(const GLubyte*, GetString,               (GLenum name)) \
    X(const GLubyte*, GetStringi,              (GLenum name, GLuint index)) \
    X(GLint,          GetUniformLocation,      (GLuint program, const GLchar* name)) \
    X(GLboolean,      IsProgram,               (GLuint program)) \
    X(void,           LinkProgram,             (GLuint program)) \
    X(void,           LinkProgramARB,          (GLhandleARB program)) \
    X(void,           ListBase,                (GLuint base)) \
    X(void,           NewList,                 (GLuint list, GLenum mode)) \
    X(void,           PixelStorei,             (GLenum pname, GLint param)) \
    X(void,           PopAttrib,               (void)) \
    X(void,           ProgramStringARB,        (GLenum target, GLenum format, GLsizei length, const void* text)) \
    X(void,           PushAttrib,              (GLbitfield mask)) \
    X(void,           RasterPos3f,             (GLfloat x, GLfloat y, GLfloat z)) \
    X(void,           ShaderSource,            (GLuint shader, GLsizei count, const GLchar* const* text, const GLint* length)) \
    X(void,           ShaderSourceARB,         (GLhandleARB shader, GLsizei count, const GLcharARB** text, const GLint* length)) \
    X(void,           TexImage1D,              (GLenum target, GLint level, GLint internalFormat, GLsizei width, GLint border, GLenum format, GLenum type, const void* pixels)) \
    X(void,           Uniform1f,               (GLint location, GLfloat value)) \
    X(void,           Uniform1i,               (GLint location, GLint value)) \
    X(void,           UseProgram,              (GLuint program))
// clang-format on
