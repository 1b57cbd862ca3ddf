#pragma once

#include <sogl/SoGLEW.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

/// A GL of names alone: which objects there are, in which context, and whether each is deleted
/// there, once. While it lives, every entry point of the toolkit leads here. Any thread may call,
/// with a context of its own. What it allocates itself never fails. One at a time.
struct ModelGL {
    ModelGL();
    ~ModelGL();

    static inline thread_local unsigned int current = 0;  ///< context of the thread, 0: none

    enum class Fault {
        None,
        Error,  ///< an error check finds an error
        Drop,   ///< a call does nothing, and its result is 0
        Zero    ///< a call that makes a name makes 0
    };
    /// Lets it happen once, at the nth check, call or making from now on.
    void arm(Fault kind, long nth) { fault = kind, places = nth; }
    bool fired = false;          ///< whether it has happened, ever
    long failingAfterError = 0;  ///< the allocation from which on all fail after that error

    // How the driver answers.
    bool compiles = true, links = true;
    const char* log = "0:1(1): error: wrong\n";
    int logLength = 22;      ///< what the driver says of it
    bool hasStrings = true;  ///< or `glGetString` returns null
    int errorPosition = -1;  ///< of assembly programs

    /// What must never happen: names deleted twice, or deleted or built in a foreign context.
    std::vector<std::string> wrongs;
    struct Object {
        const char* kind;
        unsigned int context;
        bool isBuilt;
        bool mayStay;  // a build that failed, or a deletion that was dropped, may leave it
    };
    std::map<GLuint, Object> objects;  ///< made and not deleted

    // For the entry points, and for objects of the test's own.
    enum class Gate { Pass, Drop, Zero };
    Gate gate(bool makesNames);
    GLuint make(const char* kind);
    void destroy(GLuint name, bool dropped = false);
    void build(GLuint name, bool succeeds);
    Object find(GLuint name);
    GLenum readError();

private:
    void fire();
    Object* use(GLuint name, const char* what);

    std::mutex mMutex;
    GLuint mLastName = 0;
    Fault fault = Fault::None;
    long places = 0;
};
