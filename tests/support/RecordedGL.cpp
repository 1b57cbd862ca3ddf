#include "RecordedGL.h"

#include "Allocations.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace {

RecordedGL* sGL = nullptr;

template <typename Value>
void write(std::ostream& out, Value value) {
    if constexpr (std::is_pointer_v<Value>)
        out << (value == nullptr ? "null" : "*");
    else
        out << +value;
}
void write(std::ostream& out, const char* text) {
    out << '"' << text << '"';
}
void write(std::ostream& out, const GLuint* names) {
    out << '&' << *names;
}

template <typename... Arguments>
std::string write(const char* name, Arguments... arguments) {
    std::ostringstream text;
    text << name << '(';
    [[maybe_unused]] const char* between = "";
    ((text << std::exchange(between, ", "), write(text, arguments)), ...);
    return text.str() + ')';
}

const GLubyte* bytes(const std::string& text) {
    return reinterpret_cast<const GLubyte*>(text.c_str());
}

// Entry points are told apart by their types where those say enough.
template <typename Result>
struct Gives {
    const char* name;
    bool isDropped;  // only deletions are answered then: the object stays, whoever let go of it
    bool is(const char* verb) const { return std::strncmp(name + 2, verb, std::strlen(verb)) == 0; }
};
template <typename Result, typename... Arguments>
Result answer(Gives<Result>, Arguments...) {
    return Result();
}
GLuint answer(Gives<GLuint> call) {
    return sGL->make(call.name);
}
template <typename Kind>
GLuint answer(Gives<GLuint> call, Kind) {
    return sGL->make(call.name);
}
void answer(Gives<void> call, GLuint name) {
    if (call.is("Delete")) sGL->destroy(name, call.isDropped);
}
void answer(Gives<void> call, GLsizei, const GLuint* name) {
    answer(call, *name);
}
void answer(Gives<void> call, GLuint name, GLsizei) {
    answer(call, name);
}
GLboolean answer(Gives<GLboolean>, GLuint name) {
    return sGL->notPrograms.count(name) == 0;
}
const GLubyte* answer(Gives<const GLubyte*>, GLenum name) {
    const auto found = sGL->strings.find(name);
    return found != sGL->strings.end() ? bytes(found->second) : nullptr;
}
const GLubyte* answer(Gives<const GLubyte*>, GLenum, GLuint index) {
    return bytes(sGL->extensions.at(index));
}
GLint answer(Gives<GLint>, GLuint, const char* name) {
    if (sGL->missing.find(name) != sGL->missing.end()) return -1;
    const auto found = sGL->locations.find(name);
    if (found != sGL->locations.end()) return found->second;
    return sGL->locations.emplace(name, sGL->locations.size()).first->second;
}
template <typename Texts>
void answer(Gives<void>, GLuint, GLsizei count, Texts texts, const GLint*) {
    if (sGL->muted) return;
    sGL->sources.emplace_back();
    for (GLsizei i = 0; i < count; ++i)
        sGL->sources.back() += texts[i];
}
void answer(Gives<void>, GLenum name, GLint* out) {
    *out = name == GL_NUM_EXTENSIONS               ? static_cast<GLint>(sGL->extensions.size())
           : name == GL_PROGRAM_ERROR_POSITION_ARB ? sGL->programErrorPosition
                                                   : 0;
}
void answer(Gives<void> call, GLsizei, GLuint* name) {
    *name = sGL->make(call.name);
}
void answer(Gives<void>, GLuint name, GLenum what, GLint* out) {
    const std::size_t room = sGL->infoLog.empty() ? 0 : sGL->infoLog.size() + 1;
    if (what == GL_ACTIVE_UNIFORMS) *out = static_cast<GLint>(sGL->uniforms.size());
    if (what == GL_ACTIVE_UNIFORM_MAX_LENGTH) *out = 32;
    if (what == GL_INFO_LOG_LENGTH) *out = sGL->infoLogLength.value_or(static_cast<GLint>(room));
    if (what != GL_COMPILE_STATUS && what != GL_LINK_STATUS) return;
    auto& status = what == GL_COMPILE_STATUS ? sGL->compileStatus : sGL->linkStatus;
    std::optional<GLint> value = status.always;
    if (!status.next.empty()) {
        value = status.next.front();
        status.next.pop_front();
    }
    const auto object = sGL->objects.find(name);
    sGL->isUnchecked = true;
    if (object != sGL->objects.end())
        (value.value_or(0) == 0 ? object->second.mayStay : object->second.isBuilt) = true;
    if (value) *out = *value;
}
void answer(Gives<void>, GLuint, GLsizei room, GLsizei* outLength, char* out) {
    const auto most = static_cast<std::size_t>(std::max(room, 1) - 1);
    const std::string log = sGL->infoLog.substr(0, most);
    if (outLength != nullptr) *outLength = static_cast<GLsizei>(log.size());
    if (room > 0) std::memcpy(out, log.c_str(), log.size() + 1);
}
void answer(Gives<void> call, GLuint, GLuint index, GLsizei room, GLsizei*, GLint*, GLenum* type,
            char* out) {
    if (call.isDropped) return;
    *type = sGL->uniforms.at(index).second;
    out[sGL->uniforms.at(index).first.copy(out, static_cast<std::size_t>(room - 1))] = '\0';
}

GLenum answerError() {
    const Allocations::Exempt exempt;
    const std::lock_guard<std::mutex> lock(sGL->mutex);
    ++sGL->errorReads;
    if (sGL->happens(RecordedGL::Fault::Error)) {
        Allocations::failing = sGL->failingAfterError;
        Allocations::failingOnwards = sGL->failingAfterError != 0;
        return GL_INVALID_OPERATION;
    }
    sGL->isUnchecked = false;
    if (sGL->errors.empty()) return 0;
    const GLenum error = sGL->errors.front();
    sGL->errors.pop_front();
    return error;
}

template <typename Pointer, Pointer* kEntry>
struct Recorder;
template <typename Result, typename... Arguments, Result (**kEntry)(Arguments...)>
struct Recorder<Result (*)(Arguments...), kEntry> {
    static inline const char* sName;
    static inline Result (*sFormer)(Arguments...);

    static Result call(Arguments... arguments) {
        const Allocations::Exempt exempt;
        if (!sGL->muted) sGL->note(sName, write(sName, arguments...));
        const std::lock_guard<std::mutex> lock(sGL->mutex);
        const Gives<Result> gives{sName, sGL->happens(RecordedGL::Fault::Drop)};
        return gives.isDropped && !gives.is("Delete") ? Result() : answer(gives, arguments...);
    }
    static void put(const char* name) {
        sName = name;
        sFormer = std::exchange(*kEntry, &call);
    }
};

#define PUT(Result, Name, Parameters) \
    Recorder<decltype(__glew##Name), &__glew##Name>::put("gl" #Name);
#define RESTORE(Result, Name, Parameters) \
    __glew##Name = Recorder<decltype(__glew##Name), &__glew##Name>::sFormer;

}  // namespace

RecordedGL::RecordedGL() {
    sGL = this;
    SOGL_ENTRY_POINTS(PUT)
    __glewGetError = answerError;
}

RecordedGL::~RecordedGL() {
    SOGL_ENTRY_POINTS(RESTORE)
}

void RecordedGL::failNth(const std::string& name, int nth, GLenum error) {
    faults[{name, counts[name] + nth}] = error;
}

void RecordedGL::note(const std::string& name, const std::string& call) {
    std::unique_lock<std::mutex> lock(mutex);
    calls.push_back(call);
    const auto fault = faults.find({name, ++counts[name]});
    if (fault != faults.end()) errors.push_back(fault->second);
    const auto hook = on.find(name);
    lock.unlock();
    if (hook != on.end()) hook->second();
}

// Whether it is the place of the fault. A stage that is being built then may stay: its builder does
// not learn the name. So may a program that seems not to be linked, and an assembly program unless
// an exception passes, which leaves both in somebody's hands.
bool RecordedGL::happens(Fault kind) {
    if (armed != kind || --places != 0) return false;
    armed = Fault::None;
    fired = true;
    const auto last = objects.find(lastName);
    const bool isGood = last != objects.end() && last->second.isBuilt && !isUnchecked;
    if (last == objects.end() || isGood) return true;
    const auto isMadeBy = [&](const char* call) {
        return std::strstr(last->second.madeBy, call) != nullptr;
    };
    const bool mayStay = isMadeBy("CreateShader") ||
                         (isMadeBy("CreateProgram") && kind != Fault::Error) ||
                         (isMadeBy("GenPrograms") && failingAfterError != 1);
    last->second.mayStay = last->second.mayStay || mayStay;
    return true;
}

GLuint RecordedGL::make(const char* by) {
    if (happens(Fault::Zero)) return 0;
    objects[++lastName] = {by, current, false, false};
    return lastName;
}

// Of names that were never made a GL takes no notice.
void RecordedGL::destroy(GLuint name, bool dropped) {
    const auto found = objects.find(name);
    const bool isThere = found != objects.end();
    if (isThere ? found->second.context != current : name != 0 && name <= lastName)
        wrongs.push_back("deleted " + std::to_string(name) + (isThere ? " elsewhere" : " again"));
    if (!isThere) return;
    if (dropped)
        found->second.mayStay = true;
    else
        objects.erase(found);
}
