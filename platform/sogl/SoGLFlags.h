#pragma once

/// @file
/// Capability flags of one GL context. One byte for each GL version and extension that somebody
/// above asks for; non-zero means present. Members carry the GL names without their leading
/// `GL_`, because with it they are macros of the GL headers.
///
/// This header brings in neither GL nor X11 headers.

/// The lists of flags.
///@{
// clang-format off
#define SOGL_VERSION_FLAGS(X) \
    X(1, 4)

#define SOGL_EXTENSION_FLAGS(X)  \
    X(ARB_fragment_program)      \
    X(ARB_fragment_shader)       \
    X(ARB_shader_objects)        \
    X(ARB_shading_language_100)  \
    X(ARB_vertex_buffer_object)  \
    X(ARB_vertex_program)        \
    X(ARB_vertex_shader)         \
    X(EXT_blend_minmax)

#define SOGLX_VERSION_FLAGS(X) \
    X(1, 3)                    \
    X(1, 4)

#define SOGLX_EXTENSION_FLAGS(X) \
    X(ARB_create_context)
// clang-format on
///@}

#define SOGL_VERSION_MEMBER(major, minor) unsigned char VERSION_##major##_##minor;
#define SOGL_EXTENSION_MEMBER(name) unsigned char name;

/// Flags of the GL itself.
struct GLEWContextStruct {
    SOGL_VERSION_FLAGS(SOGL_VERSION_MEMBER)
    SOGL_EXTENSION_FLAGS(SOGL_EXTENSION_MEMBER)
};

namespace SoGLXEW {

/// Flags of GLX.
struct GLXEWContextStruct {
    SOGLX_VERSION_FLAGS(SOGL_VERSION_MEMBER)
    SOGLX_EXTENSION_FLAGS(SOGL_EXTENSION_MEMBER)
};

}  // namespace SoGLXEW

#undef SOGL_VERSION_MEMBER
#undef SOGL_EXTENSION_MEMBER
