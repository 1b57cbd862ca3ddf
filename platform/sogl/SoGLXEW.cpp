#include <sogl/SoGLXEW.h>

#include "extensionList.h"

#include <GL/glx.h>

namespace SoGLXEW {

_XDisplay* (*__glewXGetCurrentDisplay)() = reinterpret_cast<_XDisplay* (*)()>(
    glXGetProcAddressARB(reinterpret_cast<const GLubyte*>("glXGetCurrentDisplay")));

unsigned int glxewContextInit(GLXEWContextStruct* flags) {
    Display* const display =
        __glewXGetCurrentDisplay != nullptr ? __glewXGetCurrentDisplay() : nullptr;
    Version version;
    if (display == nullptr || !glXQueryVersion(display, &version.major, &version.minor)) return 1;
    const char* const list = glXQueryExtensionsString(display, DefaultScreen(display));
#define SOGL_SET_VERSION(major, minor) \
    flags->VERSION_##major##_##minor = version.atLeast(major, minor) ? 1 : 0;
#define SOGL_SET_EXTENSION(name) flags->name = listHasWord(list, "GLX_" #name) ? 1 : 0;
    SOGLX_VERSION_FLAGS(SOGL_SET_VERSION)
    SOGLX_EXTENSION_FLAGS(SOGL_SET_EXTENSION)
#undef SOGL_SET_VERSION
#undef SOGL_SET_EXTENSION
    return 0;
}

}  // namespace SoGLXEW
