#include "ModelGL.h"

#include "../support/Allocations.h"

#include <string_view>
#include <utility>

namespace {

using Exempt = Allocations::Exempt;
using Lock = std::lock_guard<std::mutex>;

ModelGL* sGL = nullptr;
thread_local ModelGL::Gate tGate;

// Every entry point leads through a gate. Those that delete are called even when they do nothing,
// so that the model learns whose deletion was dropped.
template <typename Pointer, Pointer* kEntry>
struct Gated;
template <typename Result, typename... Arguments, Result (**kEntry)(Arguments...)>
struct Gated<Result (*)(Arguments...), kEntry> {
    static inline Result (*sFormer)(Arguments...);
    static inline Result (*sAnswer)(Arguments...);
    static inline bool sMakesNames, sDeletes;

    static Result call(Arguments... arguments) {
        const Exempt exempt;
        tGate = sGL->gate(sMakesNames);
        const bool runs = sAnswer != nullptr && (tGate != ModelGL::Gate::Drop || sDeletes);
        return runs ? sAnswer(arguments...) : Result();
    }
    static void put(std::string_view name) {
        sMakesNames = name.substr(0, 6) == "Create" || name.substr(0, 3) == "Gen";
        sDeletes = name.substr(0, 6) == "Delete";
        sFormer = *kEntry;
        *kEntry = &call;
    }
};

GLuint make(const char* kind) {
    return tGate == ModelGL::Gate::Zero ? 0 : sGL->make(kind);
}
void destroy(GLuint name) {
    sGL->destroy(name, tGate == ModelGL::Gate::Drop);
}
void destroyOne(GLsizei, const GLuint* name) {
    destroy(*name);
}
void status(GLuint name, GLenum what, GLint* value) {
    *value = what == GL_INFO_LOG_LENGTH ? sGL->logLength : GLint{sGL->find(name).isBuilt};
}
void log(GLuint, GLsizei room, GLsizei*, char* out) {
    const std::string_view text = sGL->log;
    if (room > 0) out[text.copy(out, static_cast<std::size_t>(room) - 1)] = '\0';
}
const GLubyte* string(GLenum name) {
    const char* const text = name == GL_EXTENSIONS
                                 ? "GL_ARB_shading_language_100 GL_ARB_shader_objects "
                                   "GL_ARB_fragment_shader GL_ARB_vertex_shader"
                                 : "2.1";
    return sGL->hasStrings ? reinterpret_cast<const GLubyte*>(text) : nullptr;
}

#define ANSWER(Name) Gated<decltype(__glew##Name), &__glew##Name>::sAnswer

void putAnswers() {
    ANSWER(CreateShader) = ANSWER(CreateShaderObjectARB) = [](GLenum) { return make("shader"); };
    ANSWER(CreateProgram) = ANSWER(CreateProgramObjectARB) = [] { return make("program"); };
    ANSWER(GenTextures) = [](GLsizei, GLuint* names) { *names = make("texture"); };
    ANSWER(GenProgramsARB) = [](GLsizei, GLuint* names) { *names = make("assembly"); };
    ANSWER(GenLists) = [](GLsizei) { return make("lists"); };
    ANSWER(DeleteObjectARB) = ANSWER(DeleteProgram) = destroy;
    ANSWER(DeleteTextures) = ANSWER(DeleteBuffers) = destroyOne;
    ANSWER(DeleteLists) = [](GLuint base, GLsizei) { destroy(base); };
    ANSWER(CompileShader) =
        ANSWER(CompileShaderARB) = [](GLuint name) { sGL->build(name, sGL->compiles); };
    ANSWER(LinkProgram) =
        ANSWER(LinkProgramARB) = [](GLuint name) { sGL->build(name, sGL->links); };
    ANSWER(GetShaderiv) = ANSWER(GetProgramiv) = ANSWER(GetObjectParameterivARB) = status;
    ANSWER(GetShaderInfoLog) = ANSWER(GetProgramInfoLog) = ANSWER(GetInfoLogARB) = log;
    ANSWER(GetString) = string;
    ANSWER(GetIntegerv) = [](GLenum, GLint* value) { *value = sGL->errorPosition; };
    ANSWER(IsProgram) = [](GLuint name) {
        return static_cast<GLboolean>(sGL->find(name).kind != nullptr);
    };
}

}  // namespace

ModelGL::ModelGL() {
    sGL = this;
#define PUT(Result, Name, Parameters) Gated<decltype(__glew##Name), &__glew##Name>::put(#Name);
    SOGL_ENTRY_POINTS(PUT)
    putAnswers();
    __glewGetError = [] { return sGL->readError(); };
}

ModelGL::~ModelGL() {
#define RESTORE(Result, Name, Parameters) \
    __glew##Name = Gated<decltype(__glew##Name), &__glew##Name>::sFormer;
    SOGL_ENTRY_POINTS(RESTORE)
}

// A stage that is being built may stay: its builder does not learn the name. A program may where it
// seems not to be linked, and an assembly program unless an exception passes, which leaves both in
// somebody's hands.
void ModelGL::fire() {
    const bool isError = std::exchange(fault, Fault::None) == Fault::Error;
    fired = true;
    if (objects.empty() || objects.rbegin()->first != mLastName) return;
    Object& last = objects.rbegin()->second;
    const std::string_view kind = last.kind;
    last.mayStay = last.mayStay || kind == "shader" || (kind == "program" && !isError) ||
                   (kind == "assembly" && failingAfterError != 1);
}

ModelGL::Gate ModelGL::gate(bool makesNames) {
    const Lock lock(mMutex);
    const bool drops = fault == Fault::Drop;
    if (!drops && !(fault == Fault::Zero && makesNames)) return Gate::Pass;
    if (--places != 0) return Gate::Pass;
    fire();
    return drops ? Gate::Drop : Gate::Zero;
}

GLenum ModelGL::readError() {
    const Lock lock(mMutex);
    if (fault != Fault::Error || --places != 0) return GL_NO_ERROR;
    fire();
    Allocations::failing = failingAfterError;
    Allocations::failingOnwards = failingAfterError != 0;
    return GL_INVALID_OPERATION;
}

GLuint ModelGL::make(const char* kind) {
    const Exempt exempt;
    const Lock lock(mMutex);
    objects.emplace_hint(objects.end(), ++mLastName, Object{kind, current, false, false});
    return mLastName;
}

// Of names that were never made, as by a call that was dropped, a GL takes no notice.
ModelGL::Object* ModelGL::use(GLuint name, const char* what) {
    const auto found = objects.find(name);
    const bool isThere = found != objects.end();
    if (isThere ? found->second.context != current : name != 0 && name <= mLastName)
        wrongs.push_back(what + std::string(isThere ? " elsewhere: " : " though gone: ") +
                         std::to_string(name));
    return isThere ? &found->second : nullptr;
}

void ModelGL::destroy(GLuint name, bool dropped) {
    const Exempt exempt;
    const Lock lock(mMutex);
    Object* const object = use(name, "deleted");
    if (dropped && object != nullptr) object->mayStay = true;
    if (!dropped) objects.erase(name);
}

void ModelGL::build(GLuint name, bool succeeds) {
    const Lock lock(mMutex);
    Object* const object = use(name, "built");
    if (object == nullptr) return;
    object->isBuilt = succeeds;
    object->mayStay = object->mayStay || !succeeds;
}

ModelGL::Object ModelGL::find(GLuint name) {
    const Lock lock(mMutex);
    const auto found = objects.find(name);
    return found != objects.end() ? found->second : Object{};
}
