#pragma once

#include <sogl/soglApi.h>
#include <sogl/SoGLFlags.h>

struct _XDisplay;

/// The GLX half of the loader. This header brings in neither GLX nor Xlib headers.
namespace SoGLXEW {

/// `glXGetCurrentDisplay`: the X display of the GLX context current on the calling thread, or
/// null. Unlike the pointers of the GL table this one is null where the system's GLX lacks it.
SOGL_API extern _XDisplay* (*__glewXGetCurrentDisplay)();

/// Fills every GLX flag for the display that is current on the calling thread. Without one no flag
/// is touched. May ask the X server.
/// @param flags not null
/// @return 0, or 1 without a current display
SOGL_API unsigned int glxewContextInit(GLXEWContextStruct* flags);

}  // namespace SoGLXEW
