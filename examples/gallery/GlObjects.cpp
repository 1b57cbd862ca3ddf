#define GL_GLEXT_PROTOTYPES
#include "GlObjects.h"

#include <sogl/SoGLEW.h>

namespace {

GLhandleARB (*sCreateShader)(GLenum) = nullptr;
GLhandleARB (*sCreateProgram)() = nullptr;

GLhandleARB createShader(GLenum type) {
    const GLhandleARB name = sCreateShader(type);
    createdGlObjects().push_back({GlObject::kShader, name});
    return name;
}

GLhandleARB createProgram() {
    const GLhandleARB name = sCreateProgram();
    createdGlObjects().push_back({GlObject::kProgram, name});
    return name;
}

}  // namespace

bool GlObject::exists() const {
    if (kind == kShader) return glIsShader(name) == GL_TRUE;
    if (kind == kProgram) return glIsProgram(name) == GL_TRUE;
    if (kind == kTexture) return glIsTexture(name) == GL_TRUE;
    return glIsBuffer(name) == GL_TRUE;
}

void watchGlObjects() {
    sCreateShader = __glewCreateShaderObjectARB;
    sCreateProgram = __glewCreateProgramObjectARB;
    __glewCreateShaderObjectARB = createShader;
    __glewCreateProgramObjectARB = createProgram;
}

std::vector<GlObject>& createdGlObjects() {
    thread_local std::vector<GlObject> objects;
    return objects;
}
