#pragma once

#include <kygl/kyglApi.h>

/// Which GL context each id belongs to, as far as diagnostics have seen it, and whether operations
/// with an id keep to that.
///
/// The library calls this only while diagnostics are on, and never with the lock of the registry or
/// of the queue held. Nothing here throws.
class KYGL_LOCAL KyContextWatch {
public:
    /// An operation with an id, in the words of its messages.
    struct Operation {
        const char* name;            ///< as the application calls it: "apply"
        const char* effect;          ///< in a wrong context: "it uses the program of that name"
        const char* file = nullptr;  ///< that it is about, or null
        const char* otherFile = nullptr;  ///< likewise
        bool takesId = true;              ///< whether the id is its argument
    };

    /// `kyglSetContext(id)` has run: the id belongs to the GL context that is current.
    /// @param isNew whether it registered the id
    static void learn(unsigned int id, bool isNew) noexcept;

    /// `kyglClearContext(id)` has run, or `kyglClearAllContexts()`.
    static void forget(unsigned int id, bool withAll) noexcept;

    /// To be called before the first GL call of an operation: reports what is wrong about the id
    /// and the GL context that is current, and takes GL errors away that are pending there.
    ///
    /// Where the last operation of the thread had the same id and context and nothing was wrong,
    /// it takes no lock, allocates nothing and does not ask for the operation: it asks GLX which
    /// context is current and reads `glGetError` once.
    template <typename MakeOperation>
    static void judge(unsigned int id, const MakeOperation& operation) noexcept {
        const unsigned int error = askQuickly(id);
        if (error != 0) judgeAnew(operation(), id, error);
    }

    /// The same for an operation that destroys: the context is looked at more closely.
    static void judgeAnew(const Operation& operation, unsigned int id,
                          unsigned int error = kNotAsked) noexcept;

private:
    static constexpr unsigned int kNotAsked = 0xFFFFFFFFU;  ///< for a GL error
    static unsigned int askQuickly(unsigned int id) noexcept;
};
