#pragma once

#include <sogl/SoGLEW.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

/// A GL of names alone: which objects there are, in which context, and whether each is deleted
/// there, once. While it lives, every entry point of the toolkit leads here. Any thread may call,
/// with a context of its own. What it allocates itself never fails. One at a time.
class ModelGL {
public:
    ModelGL();
    ~ModelGL();
    ModelGL(const ModelGL&) = delete;
    ModelGL& operator=(const ModelGL&) = delete;

    static void makeCurrent(unsigned int context);  ///< on this thread; 0: none
    static unsigned int current();

    enum class Fault {
        None,
        Error,  ///< an error check finds an error
        Drop,   ///< a call does nothing, and its result is 0
        Zero    ///< a call that makes names makes 0
    };
    /// Lets it happen once, at the nth check, call or making of names from now on.
    void arm(Fault fault, long nth);
    bool fired() const { return mFired; }  ///< since it was made
    long failingAfterError = 0;  ///< the allocation from which on all fail after that error

    // How the driver answers.
    bool compiles = true;
    bool links = true;
    const char* log = "0:1(1): error: wrong\n";
    int logLength = 22;      ///< what the driver tells
    bool hasStrings = true;  ///< or `glGetString` returns null
    int errorPosition = -1;  ///< of assembly programs

    /// What must never happen: names deleted twice, or deleted or linked in a foreign context.
    std::vector<std::string> wrongs;
    /// Objects that were not deleted, except those that a failed build or a dropped call may leave.
    std::vector<std::string> lost() const;
    std::size_t objects() const { return mObjects.size(); }

    // For the entry points, and for objects of the test's own.
    enum class Gate { Pass, Drop, Zero };
    Gate gate(bool makesNames);
    GLuint make(const char* kind);
    void destroy(GLuint name, bool dropped = false);
    void use(GLuint name);
    bool knows(GLuint name) const;
    void build(GLuint name, bool succeeds);
    bool isBuilt(GLuint name);
    GLenum readError();

private:
    struct Object {
        const char* kind;
        unsigned int context;
        bool isBuilt;
        bool mayStay;
    };

    void fire(bool isError);
    void check(GLuint name, const char* what);

    mutable std::mutex mMutex;
    std::map<GLuint, Object> mObjects;
    GLuint mLastName = 0;
    Fault mFault = Fault::None;
    long mPlaces = 0;  // before it happens
    bool mFired = false;
};
