#pragma once

#include <kygl/kyglApi.h>

/// Messages about mistakes in the use of the library, for those who ask for them.
///
/// The library is silent by contract: a shader file that is missing, a uniform that the program
/// does not have and a context that is not current change what is drawn, and nothing says why.
/// While diagnostics are on, each of these is one message, which names the things as the
/// application does and says what to do:
///
///     KyDiagnostics::enable();   // lines on standard error
///     ...
///     context 3: error: deferredDelete(3) runs while the GL context of id 5 is current: ...
///
/// A message comes once. The same one about the same subject, such as one uniform of one program,
/// is only counted, so a fault that each frame repeats is one message. The count is reported when
/// the fault changes or ends and by `disable`. At most 1,024 subjects are remembered; beyond that
/// the oldest is forgotten, and its message can come again.
///
/// Off, as at the start, the library makes the GL calls and the allocations that it makes without
/// this class. On, each operation with an id asks GLX which context is current, and with the topic
/// `Error` it reads `glGetError` before its own first call: an error that was pending is reported
/// and gone. Once for each program it asks for the uniforms that the program has, and for each
/// build that succeeds for its log. Where nothing is wrong a steady `apply` still allocates nothing
/// and takes no lock of the library. Any thread may call anything here. A message for which there
/// is no memory is lost; nothing else changes then.
class KYGL_API KyDiagnostics {
public:
    /// How bad it is.
    enum class Severity {
        Note,     ///< for information: a count, or the place that another message refers to
        Warning,  ///< it works, though probably not as intended
        Error     ///< what the application asked for did not happen, or happened to another context
    };

    /// What a message is about.
    enum Topic : unsigned int {
        Build = 1,     ///< a shader that does not compile, a program that does not link
        File = 2,      ///< a shader file or an included file that cannot be read
        Include = 4,   ///< an include that has no effect, or another one than it seems to have
        Version = 8,   ///< a `#version` that is not first
        Uniform = 16,  ///< a uniform that the program lacks or declares with another type
        Context = 32,  ///< an id and the GL context that is current do not fit
        Queue = 64,    ///< names that pile up in `KyDeferredDeleteMap`
        Error = 128,   ///< a GL error of the application's that the library found pending
        Text = 256,    ///< a font or a context in which text is not what was asked for
        All = 0x1FF    ///< every one of these
    };

    /// One message. The texts are valid until the handler returns.
    struct Message {
        Severity severity;     ///< how bad it is
        Topic topic;           ///< what it is about
        unsigned int context;  ///< id of the context, or `KYGL_NO_CONTEXT`
        const char* file;      ///< path of the file, or null
        long line;             ///< in the file, from 1; 0 for none
        long column;           ///< in the line, from 1; 0 for none
        const char* text;      ///< what happened and what to do, in one line; never null
        long count;            ///< 1, or in a count how often the message was due
    };

    /// Takes one message and the pointer that it was set with.
    ///
    /// It is called on the thread on which the message arises, several threads may call it at once,
    /// and none holds a lock of the library. It may call the library, except for operations on the
    /// object that the message is about; what it causes itself is delivered after it returns. It
    /// must not throw.
    using Handler = void (*)(const Message& message, void* user);

    /// Turns diagnostics on. Called again, it replaces handler and topics, and everything counts as
    /// not yet reported; for the former handler it waits as `disable` does.
    ///
    /// GL contexts are learned by `kyglSetContext` while this is on: an id that was set before is
    /// not judged until it is set again.
    /// @param handler null writes each message to standard error as one line, "file:line: severity:
    ///     text" or "context 3: severity: text"
    /// @param user handed to the handler
    /// @param topics what to report, a sum of `Topic`
    /// Throws `std::bad_alloc` and changes nothing when memory runs out.
    static void enable(Handler handler = nullptr, void* user = nullptr, unsigned int topics = All);

    /// Reports the counts and turns diagnostics off. It waits for the handler where another thread
    /// is in it: after it returns the handler does not run any more. Called by the handler or
    /// by an observer of builds, it does not wait; called by the handler, it reports no counts.
    static void disable();

    /// Sets how many names of one context may wait in `KyDeferredDeleteMap` before that is
    /// reported: 10,000 at the start.
    /// @param names 1 or more; less counts as 1
    static void setQueueLimit(long names);
};
