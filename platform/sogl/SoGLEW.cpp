#include <sogl/SoGLEW.h>

#include <sogl/SoError.h>

#include "extensionList.h"

#include <GL/glx.h>

#include <atomic>
#include <cstring>

namespace {

// Stands in for an entry point that the system's GL does not know.
template <typename Pointer, Pointer* kEntry>
struct Missing;

template <typename Result, typename... Arguments, Result (**kEntry)(Arguments...)>
struct Missing<Result (*)(Arguments...), kEntry> {
    static const char* sName;
    static std::atomic<bool> sReported;

    static Result call(Arguments...) {
        if (!sReported.exchange(true))
            SoError::post("SoGLEW : the GL has no entry point %s", sName);
        return Result();
    }
};

template <typename Result, typename... Arguments, Result (**kEntry)(Arguments...)>
const char* Missing<Result (*)(Arguments...), kEntry>::sName = nullptr;
template <typename Result, typename... Arguments, Result (**kEntry)(Arguments...)>
std::atomic<bool> Missing<Result (*)(Arguments...), kEntry>::sReported{false};

// GLX resolves names without a context, so the table is full before anybody can call through it.
template <typename Pointer, Pointer* kEntry>
Pointer resolve(const char* name) {
    const auto found = glXGetProcAddressARB(reinterpret_cast<const GLubyte*>(name));
    if (found != nullptr) return reinterpret_cast<Pointer>(found);
    Missing<Pointer, kEntry>::sName = name;
    return &Missing<Pointer, kEntry>::call;
}

}  // namespace

#define SOGL_DEFINE(Result, Name, Parameters) \
    Result(*__glew##Name) Parameters = resolve<decltype(__glew##Name), &__glew##Name>("gl" #Name);
SOGL_ENTRY_POINTS(SOGL_DEFINE)
#undef SOGL_DEFINE

namespace {

struct ExtensionFlag {
    const char* name;
    unsigned char GLEWContextStruct::*flag;
};

#define SOGL_FLAG(name) {"GL_" #name, &GLEWContextStruct::name},
constexpr ExtensionFlag kExtensionFlags[] = {SOGL_EXTENSION_FLAGS(SOGL_FLAG)};
#undef SOGL_FLAG

const char* getString(GLenum name) {
    return reinterpret_cast<const char*>(glGetString(name));
}

// Core profiles refuse the one long string and leave an error behind for asking, so it is asked
// for only where the indexed form has nothing.
int countExtensions(const Version& version) {
    GLint count = 0;
    if (version.atLeast(3, 0)) glGetIntegerv(GL_NUM_EXTENSIONS, &count);
    return count;
}

void readIndexedExtensions(GLEWContextStruct& flags, int count) {
    for (const ExtensionFlag& extension : kExtensionFlags)
        flags.*extension.flag = 0;
    for (int i = 0; i < count; ++i) {
        const auto* const name =
            reinterpret_cast<const char*>(glGetStringi(GL_EXTENSIONS, static_cast<GLuint>(i)));
        if (name == nullptr) continue;
        for (const ExtensionFlag& extension : kExtensionFlags)
            if (std::strcmp(name, extension.name) == 0) flags.*extension.flag = 1;
    }
}

void readExtensionString(GLEWContextStruct& flags) {
    const char* const list = getString(GL_EXTENSIONS);
    for (const ExtensionFlag& extension : kExtensionFlags)
        flags.*extension.flag = listHasWord(list, extension.name) ? 1 : 0;
}

}  // namespace

unsigned int SoGLEW::glewContextInit(GLEWContextStruct* flags) {
    const char* const text = getString(GL_VERSION);
    if (text == nullptr) return 1;
    const Version version = parseVersion(text);
#define SOGL_SET(major, minor) \
    flags->VERSION_##major##_##minor = version.atLeast(major, minor) ? 1 : 0;
    SOGL_VERSION_FLAGS(SOGL_SET)
#undef SOGL_SET
    if (const int count = countExtensions(version))
        readIndexedExtensions(*flags, count);
    else
        readExtensionString(*flags);
    return 0;
}
