#pragma once

#include <kygl/KyDiagnostics.h>
#include <kygl/kyglApi.h>
#include <kylib/KyResult.h>

#include <chrono>

/// One compile or link that happened, as an observer of builds sees it.
///
///     void show(const KyShaderBuild& build, void*) {
///         for (long i = 0; i < build.messageCount; ++i)
///             std::fprintf(stderr, "%s\n", build.messages[i].line);
///     }
///     ...
///     KyShaderBuild::setObserver(show);
///
/// The observer learns of each stage that shaders compile and of each program that techniques link,
/// good or not: the result, the time, the files that went in, and what the driver and the reader of
/// the files have to say, at the file and line where its cause is, however deep it is included.
///
/// Everything in a build belongs to the library and is valid until the observer returns.
struct KYGL_API KyShaderBuild {
    /// A shader as it went in.
    struct Stage {
        const char* file = nullptr;    ///< as it was named; null for the stage that a build lacks
        const char* folder = nullptr;  ///< folder below "/share/shaders/"
        const char* macros = nullptr;  ///< the "#define" lines in front of the file's text
    };

    /// A place in a file or in a macro.
    struct Place {
        const char* file = nullptr;   ///< full path; null in a macro
        const char* macro = nullptr;  ///< the macro as it was pushed; null in a file
        long line = 0;                ///< in the file, from 1; 0 for the whole file or macro
        long column = 0;              ///< from 1; 0 where the driver names none
    };

    /// A line of the driver's log, or what is wrong with a file.
    struct Message {
        KyDiagnostics::Severity severity;  ///< `Note` for a line of a log that has none
        /// `Build` from the driver; `File`, `Include` and `Version` from reading the files.
        KyDiagnostics::Topic topic;
        const char* text;  ///< without places and severity
        /// Where its cause is. None where the driver gives no place or one that is not found, two
        /// for a link: one in each stage.
        const Place* places;
        long placeCount;   ///< number of places
        const char* line;  ///< all of it, printable: "file:line: severity: text"
    };

    Stage vertex;            ///< of a compile only the stage that was compiled, of a link both
    Stage fragment;          ///< likewise
    unsigned int context;    ///< id of the context
    const KyResult& result;  ///< its message holds the driver's log where there is an error
    /// With reading the file; that of all attempts where `compile` makes more than one.
    std::chrono::nanoseconds time;
    /// Those of the files first, then the log in its order; at least one error after a failure.
    const Message* messages;
    long messageCount;         ///< number of messages
    const char* const* files;  ///< full path of every file that was asked for, those that are not
                               ///< there too, in the order of first use
    long fileCount;            ///< number of files

    /// Takes one build and the pointer that it was set with.
    ///
    /// It is called on the thread that builds, when the objects have their new state, and with no
    /// lock of the library held; several threads may call it at once. It may use the GL as it finds
    /// it, but not the shaders and the technique that were built. What it throws reaches whoever
    /// asked for the build.
    using Observer = void (*)(const KyShaderBuild& build, void* user);

    /// Calls `observer` from now on, once for each build; null, as at the start, ends that. Where
    /// one `compile` tries a stage twice it is one build, with the result of the last attempt.
    ///
    /// While nobody listens, each build costs one load more. While somebody does, the places of all
    /// lines are kept for each file, the log of a good build is fetched as well, and a file that
    /// was read before is read once more for its places. A build whose report finds no memory is
    /// not reported.
    ///
    /// Any thread may call. After it returns the former observer does not run any more, except
    /// where an observer itself or the handler of `KyDiagnostics` calls this.
    /// @param user handed to the observer
    static void setObserver(Observer observer, void* user = nullptr);
};
