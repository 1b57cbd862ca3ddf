#include "RecordedGL.h"

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
struct Gives {};
template <typename Result, typename... Arguments>
Result answer(Gives<Result>, Arguments...) {
    return Result();
}
GLuint answer(Gives<GLuint>) {
    return ++sGL->lastName;
}
GLuint answer(Gives<GLuint>, GLenum) {
    return ++sGL->lastName;
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
void answer(Gives<void>, GLsizei count, GLuint* names) {
    while (count-- > 0)
        *names++ = ++sGL->lastName;
}
void answer(Gives<void>, GLuint, GLenum what, GLint* out) {
    const std::size_t room = sGL->infoLog.empty() ? 0 : sGL->infoLog.size() + 1;
    if (what == GL_INFO_LOG_LENGTH) *out = sGL->infoLogLength.value_or(static_cast<GLint>(room));
    if (what != GL_COMPILE_STATUS && what != GL_LINK_STATUS) return;
    auto& status = what == GL_COMPILE_STATUS ? sGL->compileStatus : sGL->linkStatus;
    std::optional<GLint> value = status.always;
    if (!status.next.empty()) {
        value = status.next.front();
        status.next.pop_front();
    }
    if (value) *out = *value;
}
void answer(Gives<void>, GLuint, GLsizei room, GLsizei* outLength, char* out) {
    const auto most = static_cast<std::size_t>(std::max(room, 1) - 1);
    const std::string log = sGL->infoLog.substr(0, most);
    if (outLength != nullptr) *outLength = static_cast<GLsizei>(log.size());
    if (room > 0) std::memcpy(out, log.c_str(), log.size() + 1);
}

GLenum answerError() {
    const std::lock_guard<std::mutex> lock(sGL->mutex);
    ++sGL->errorReads;
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
        if (!sGL->muted) sGL->note(sName, write(sName, arguments...));
        const std::lock_guard<std::mutex> lock(sGL->mutex);
        return answer(Gives<Result>(), arguments...);
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
