#include "ModelGL.h"

#include "../support/Allocations.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

using Exempt = Allocations::Exempt;
using Lock = std::lock_guard<std::mutex>;

ModelGL* sGL = nullptr;
thread_local unsigned int tContext = 0;
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
    static void put(const char* name) {
        sMakesNames = std::strncmp(name, "Create", 6) == 0 || std::strncmp(name, "Gen", 3) == 0;
        sDeletes = std::strncmp(name, "Delete", 6) == 0;
        sAnswer = nullptr;
        sFormer = *kEntry;
        *kEntry = &call;
    }
};

GLuint makeName(const char* kind) {
    return tGate == ModelGL::Gate::Zero ? 0 : sGL->make(kind);
}
void deleteName(GLuint name) {
    sGL->destroy(name, tGate == ModelGL::Gate::Drop);
}
void status(GLuint name, GLenum what, GLint* value) {
    const bool isLength = what == GL_INFO_LOG_LENGTH;
    *value = isLength ? sGL->logLength : static_cast<GLint>(sGL->isBuilt(name));
}
void log(GLuint, GLsizei room, GLsizei*, char* out) {
    if (room <= 0) return;
    const std::string_view text =
        std::string_view(sGL->log).substr(0, static_cast<std::size_t>(room) - 1);
    out[text.copy(out, text.size())] = '\0';
}
const GLubyte* string(GLenum name) {
    const char* const text = name == GL_VERSION ? "2.1"
                             : name == GL_EXTENSIONS
                                 ? "GL_ARB_shading_language_100 GL_ARB_shader_objects "
                                   "GL_ARB_fragment_shader GL_ARB_vertex_shader"
                                 : "words";
    return sGL->hasStrings ? reinterpret_cast<const GLubyte*>(text) : nullptr;
}

#define ANSWER(Name) Gated<decltype(__glew##Name), &__glew##Name>::sAnswer

void putAnswers() {
    ANSWER(CreateShader) =
        ANSWER(CreateShaderObjectARB) = [](GLenum) { return makeName("shader"); };
    ANSWER(CreateProgram) = ANSWER(CreateProgramObjectARB) = [] { return makeName("program"); };
    ANSWER(GenTextures) = [](GLsizei, GLuint* names) { *names = makeName("texture"); };
    ANSWER(GenProgramsARB) = [](GLsizei, GLuint* names) { *names = makeName("assembly"); };
    ANSWER(GenLists) = [](GLsizei) { return makeName("lists"); };
    ANSWER(DeleteObjectARB) = ANSWER(DeleteProgram) = deleteName;
    ANSWER(DeleteTextures) =
        ANSWER(DeleteBuffers) = [](GLsizei, const GLuint* names) { deleteName(*names); };
    ANSWER(DeleteLists) = [](GLuint base, GLsizei) { deleteName(base); };
    ANSWER(CompileShader) =
        ANSWER(CompileShaderARB) = [](GLuint name) { sGL->build(name, sGL->compiles); };
    ANSWER(LinkProgram) =
        ANSWER(LinkProgramARB) = [](GLuint name) { sGL->build(name, sGL->links); };
    ANSWER(AttachShader) = ANSWER(AttachObjectARB) = [](GLuint program, GLuint shader) {
        sGL->use(program);
        sGL->use(shader);
    };
    ANSWER(GetShaderiv) = ANSWER(GetProgramiv) = ANSWER(GetObjectParameterivARB) = status;
    ANSWER(GetShaderInfoLog) = ANSWER(GetProgramInfoLog) = ANSWER(GetInfoLogARB) = log;
    ANSWER(GetString) = string;
    ANSWER(GetIntegerv) = [](GLenum, GLint* value) { *value = sGL->errorPosition; };
    ANSWER(IsProgram) = [](GLuint name) { return static_cast<GLboolean>(sGL->knows(name)); };
}

}  // namespace

ModelGL::ModelGL() {
    sGL = this;
#define PUT(Result, Name, Parameters) Gated<decltype(__glew##Name), &__glew##Name>::put(#Name);
    SOGL_ENTRY_POINTS(PUT)
#undef PUT
    putAnswers();
    __glewGetError = [] { return sGL->readError(); };
}

ModelGL::~ModelGL() {
#define RESTORE(Result, Name, Parameters) \
    __glew##Name = Gated<decltype(__glew##Name), &__glew##Name>::sFormer;
    SOGL_ENTRY_POINTS(RESTORE)
#undef RESTORE
}

void ModelGL::makeCurrent(unsigned int context) {
    tContext = context;
}
unsigned int ModelGL::current() {
    return tContext;
}

void ModelGL::arm(Fault fault, long nth) {
    mFault = fault;
    mPlaces = nth;
}

// A stage that is being built may stay: its builder does not learn the name. A program may where it
// seems not to be linked, and an assembly program unless an exception passes, which leaves both in
// somebody's hands.
void ModelGL::fire(bool isError) {
    mFault = Fault::None;
    mFired = true;
    if (mObjects.empty()) return;
    auto& [name, last] = *mObjects.rbegin();
    const std::string_view kind = last.kind;
    const bool mayStay = kind == "shader" || (kind == "program" && !isError) ||
                         (kind == "assembly" && failingAfterError != 1);
    if (name == mLastName && mayStay) last.mayStay = true;
}

ModelGL::Gate ModelGL::gate(bool makesNames) {
    const Lock lock(mMutex);
    const bool counts = mFault == Fault::Drop || (mFault == Fault::Zero && makesNames);
    if (!counts || --mPlaces != 0) return Gate::Pass;
    const Gate closed = mFault == Fault::Drop ? Gate::Drop : Gate::Zero;
    fire(false);
    return closed;
}

GLenum ModelGL::readError() {
    const Exempt exempt;
    const Lock lock(mMutex);
    if (mFault != Fault::Error || --mPlaces != 0) return GL_NO_ERROR;
    fire(true);
    Allocations::failing = failingAfterError;
    Allocations::failingOnwards = failingAfterError != 0;
    return GL_INVALID_OPERATION;
}

GLuint ModelGL::make(const char* kind) {
    const Exempt exempt;
    const Lock lock(mMutex);
    mObjects.emplace_hint(mObjects.end(), ++mLastName, Object{kind, tContext, false, false});
    return mLastName;
}

// Of names that were never made, as by a call that was dropped, a GL takes no notice.
void ModelGL::check(GLuint name, const char* what) {
    if (name == 0 || name > mLastName) return;
    const auto found = mObjects.find(name);
    const bool isThere = found != mObjects.end();
    if (isThere && found->second.context == tContext) return;
    wrongs.push_back(std::string(what) + (isThere ? " in a foreign context: " : " though gone: ") +
                     std::to_string(name));
}

void ModelGL::destroy(GLuint name, bool dropped) {
    const Exempt exempt;
    const Lock lock(mMutex);
    check(name, "deleted");
    const auto found = mObjects.find(name);
    if (found == mObjects.end()) return;
    if (dropped)
        found->second.mayStay = true;
    else
        mObjects.erase(found);
}

void ModelGL::use(GLuint name) {
    const Lock lock(mMutex);
    check(name, "used");
}

bool ModelGL::knows(GLuint name) const {
    const Lock lock(mMutex);
    return mObjects.count(name) != 0;
}

void ModelGL::build(GLuint name, bool succeeds) {
    const Lock lock(mMutex);
    check(name, "built");
    const auto found = mObjects.find(name);
    if (found == mObjects.end()) return;
    found->second.isBuilt = succeeds;
    if (!succeeds) found->second.mayStay = true;
}

bool ModelGL::isBuilt(GLuint name) {
    const Lock lock(mMutex);
    const auto found = mObjects.find(name);
    return found != mObjects.end() && found->second.isBuilt;
}

std::vector<std::string> ModelGL::lost() const {
    std::vector<std::string> names;
    for (const auto& [name, object] : mObjects)
        if (!object.mayStay) names.push_back(object.kind + std::string(" ") + std::to_string(name));
    return names;
}
