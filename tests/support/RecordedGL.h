#pragma once

#include <sogl/SoGLEW.h>

#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

/// A GL without a driver: while it lives, every entry point of the toolkit leads here.
///
/// Each call is noted as it would stand in C, numbers decimal: "glAttachObjectARB(3, 5)",
/// "glGetUniformLocation(3, \"Color\")", "glDeleteTextures(1, &7)"; other pointers are "*" or
/// "null". Each name that is made is known until it is deleted. What the GL allocates itself
/// neither counts nor fails. Any thread may call, with a context of its own; a test looks and
/// changes answers while none does. One at a time.
struct RecordedGL {
    RecordedGL();
    ~RecordedGL();

    std::vector<std::string> calls;    ///< all but `glGetError`, in order
    std::vector<std::string> sources;  ///< the texts handed to `glShaderSource` and its ARB twin
    int errorReads = 0;                ///< calls of `glGetError`
    std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

    std::deque<GLenum> errors;  ///< what `glGetError` answers, from the front; 0 when empty
    /// Leaves `error` behind at the nth call from now of `name` ("glLinkProgram").
    void failNth(const std::string& name, int nth, GLenum error);
    void failNext(const std::string& name, GLenum error) { failNth(name, 1, error); }
    /// Runs at each call of the entry point, behind the note and in front of the answer.
    std::map<std::string, std::function<void()>> on;
    bool muted = false;  ///< nothing is noted, failed by name or hooked

    /// The answer of a status query: the queued ones first; none stores nothing.
    struct Status {
        std::optional<GLint> always = 1;
        std::deque<std::optional<GLint>> next;
    };
    Status compileStatus, linkStatus;
    std::string infoLog;                                   ///< of every shader and program
    std::optional<GLint> infoLogLength;                    ///< where it is not that of the log
    std::map<GLenum, std::string> strings;                 ///< `glGetString`; else null
    std::vector<std::string> extensions;                   ///< `glGetStringi`
    std::vector<std::pair<std::string, GLenum>> uniforms;  ///< that programs have, with their types
    std::set<std::string, std::less<>> missing;            ///< uniforms and attributes at -1
    std::map<std::string, GLint, std::less<>> locations;   ///< the others, as first asked
    std::set<GLuint> notPrograms;                          ///< where `glIsProgram` is false
    GLint programErrorPosition = -1;                       ///< of assembly programs
    GLuint lastName = 0;  ///< of whatever is made: they count from 1

    static inline thread_local unsigned int current = 0;  ///< context of the thread
    struct Object {
        const char* madeBy;
        unsigned int context;
        bool isBuilt;  ///< its status was asked, and is good
        bool mayStay;  ///< a build that failed, or a deletion that was dropped, may leave it
    };
    std::map<GLuint, Object> objects;  ///< made and not deleted
    std::vector<std::string> wrongs;   ///< names deleted twice or in a foreign context

    enum class Fault {
        None,
        Error,  ///< an error check finds an error
        Drop,   ///< a call does nothing, and its result is 0
        Zero    ///< a call that makes a name makes 0
    };
    /// Lets it happen once, at the nth check, call or making from now on, whatever it is.
    void arm(Fault kind, long nth) { armed = kind, places = nth; }
    bool fired = false;          ///< whether it has happened, ever
    long failingAfterError = 0;  ///< the allocation from which on all fail after that error

    // For the recorders.
    void note(const std::string& name, const std::string& call);
    bool happens(Fault kind);
    GLuint make(const char* by);
    void destroy(GLuint name, bool dropped);
    Fault armed = Fault::None;
    bool isUnchecked = false;  // the status that was asked last
    long places = 0;
    std::mutex mutex;
    std::map<std::string, int> counts;
    std::map<std::pair<std::string, int>, GLenum> faults;
};
