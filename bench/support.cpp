#include "support.h"

#include "../tests/support/TempShaders.h"

#include <kygl/KyDeferredDeleteMap.h>
#include <sogl/SoGLEW.h>

#include <GL/glx.h>
#include <malloc.h>

#include <cstdlib>
#include <mutex>
#include <stdexcept>

std::map<std::string, std::function<void(long)>>& countable() {
    static std::map<std::string, std::function<void(long)>> sides;
    return sides;
}

// The program's own functions take the place of the C library's for every library in the process;
// `operator new` ends there too.
extern "C" void* __libc_malloc(std::size_t size) noexcept;
extern "C" void* __libc_calloc(std::size_t nmemb, std::size_t size) noexcept;
extern "C" void* __libc_realloc(void* ptr, std::size_t size) noexcept;
extern "C" void __libc_free(void* ptr) noexcept;

static thread_local unsigned long tAllocations = 0;
static thread_local bool tCountsBytes = false;
static thread_local long tBytes = 0;

unsigned long allocations() {
    return tAllocations;
}

long heapGrowth(const std::function<void()>& work) {
    tBytes = 0;
    tCountsBytes = true;
    work();
    tCountsBytes = false;
    return tBytes;
}

// Where no bytes are counted an allocation costs one comparison more and the functions below end in
// a jump: these stay out of line.
[[gnu::cold, gnu::noinline]] static void* withBytes(void* ptr) {
    tBytes += static_cast<long>(malloc_usable_size(ptr));
    return ptr;
}

[[gnu::cold, gnu::noinline]] static void* withoutBytes(void* ptr) {
    tBytes -= static_cast<long>(malloc_usable_size(ptr));
    return ptr;
}

extern "C" void* malloc(std::size_t size) noexcept {
    ++tAllocations;
    if (tCountsBytes) return withBytes(__libc_malloc(size));
    return __libc_malloc(size);
}

extern "C" void* calloc(std::size_t nmemb, std::size_t size) noexcept {
    ++tAllocations;
    if (tCountsBytes) return withBytes(__libc_calloc(nmemb, size));
    return __libc_calloc(nmemb, size);
}

extern "C" void* realloc(void* ptr, std::size_t size) noexcept {
    ++tAllocations;
    if (tCountsBytes) return withBytes(__libc_realloc(withoutBytes(ptr), size));
    return __libc_realloc(ptr, size);
}

extern "C" void free(void* ptr) noexcept {
    if (tCountsBytes) withoutBytes(ptr);
    __libc_free(ptr);
}

namespace {

struct EntryPoints {
#define MEMBER(Result, Name, Parameters) Result(*Name) Parameters;
    SOGL_ENTRY_POINTS(MEMBER)
#undef MEMBER
};

template <typename Pointer>
struct NoOp;
template <typename Result, typename... Arguments>
struct NoOp<Result (*)(Arguments...)> {
    static Result call(Arguments...) { return Result(); }
};

GLuint newName() {
    static GLuint last = 0;
    return ++last;
}
GLuint newShader(GLenum) {
    return newName();
}
GLuint newLists(GLsizei) {
    return newName();
}
GLboolean yes(GLuint) {
    return GL_TRUE;
}
void one(GLuint, GLenum, GLint* value) {
    *value = 1;
}
const GLubyte* describe(GLenum name) {
    return reinterpret_cast<const GLubyte*>(
        name == GL_VERSION ? "2.1"
                           : "GL_ARB_fragment_shader GL_ARB_shader_objects GL_ARB_vertex_shader "
                             "GL_ARB_shading_language_100 GL_ARB_vertex_buffer_object");
}

EntryPoints noOps() {
    EntryPoints entries;
#define SET(Result, Name, Parameters) entries.Name = NoOp<Result(*) Parameters>::call;
    SOGL_ENTRY_POINTS(SET)
#undef SET
    entries.CreateProgram = entries.CreateProgramObjectARB = newName;
    entries.CreateShader = entries.CreateShaderObjectARB = newShader;
    entries.GenLists = newLists;
    entries.GetObjectParameterivARB = entries.GetProgramiv = entries.GetShaderiv = one;
    entries.GetString = describe;
    entries.IsProgram = yes;
    return entries;
}

EntryPoints driver() {
    EntryPoints entries;
#define GET(Result, Name, Parameters) entries.Name = __glew##Name;
    SOGL_ENTRY_POINTS(GET)
#undef GET
    return entries;
}

void install(bool real) {
    static const EntryPoints kDriver = driver();
    static const EntryPoints kNoOps = noOps();
    static std::mutex mutex;
    static bool present = true;
    const std::lock_guard<std::mutex> hold(mutex);
    if (present == real) return;
    present = real;
    const EntryPoints& entries = real ? kDriver : kNoOps;
#define PUT(Result, Name, Parameters) __glew##Name = entries.Name;
    SOGL_ENTRY_POINTS(PUT)
#undef PUT
}

void drainAll() {
    for (unsigned int context = 0; context < 8; ++context)
        KyDeferredDeleteMap::deferredDelete(context);
}

struct Pbuffer {
    Display* display = XOpenDisplay(nullptr);
    GLXPbuffer drawable = 0;
    GLXContext context = nullptr;

    Pbuffer() {
        // The driver reads this when it is loaded. A cache on disk would make first builds second
        // ones.
        setenv("MESA_SHADER_CACHE_DISABLE", "true", 1);
        if (display == nullptr) throw std::runtime_error("no X display; try xvfb-run");
        const int wanted[] = {GLX_DRAWABLE_TYPE, GLX_PBUFFER_BIT, None};
        const int size[] = {GLX_PBUFFER_WIDTH, 16, GLX_PBUFFER_HEIGHT, 16, None};
        int count = 0;
        GLXFBConfig* const configs =
            glXChooseFBConfig(display, DefaultScreen(display), wanted, &count);
        if (configs == nullptr || count == 0) throw std::runtime_error("no GLX on the X display");
        drawable = glXCreatePbuffer(display, configs[0], size);
        context = glXCreateNewContext(display, configs[0], GLX_RGBA_TYPE, nullptr, True);
        XFree(configs);
    }
};

// Made once and kept: drivers do not like to be unloaded and loaded again.
const Pbuffer& pbuffer() {
    static const Pbuffer one;
    return one;
}

void makeContextCurrent() {
    const Pbuffer& p = pbuffer();
    if (!glXMakeContextCurrent(p.display, p.drawable, p.drawable, p.context))
        throw std::runtime_error("the GLX context cannot be made current");
}

void releaseContext() {
    glXMakeContextCurrent(pbuffer().display, None, None, nullptr);
}

}  // namespace

NoOpGL::NoOpGL() {
    install(false);
}

NoOpGL::~NoOpGL() {
    drainAll();
}

NoOpGLInContext::NoOpGLInContext() {
    makeContextCurrent();
}

NoOpGLInContext::~NoOpGLInContext() {
    releaseContext();
}

RealGL::RealGL() {
    makeContextCurrent();
    install(true);
    // What fonts of other sides left behind.
    while (glGetError() != GL_NO_ERROR) {
    }
}

RealGL::~RealGL() {
    drainAll();
    releaseContext();
}

std::string writeShader(const std::string& file, const std::string& text) {
    static const TempShaders folder("bench");
    folder.write(file, text);
    return folder.path(file);
}
