#pragma once

#include <string>
#include <vector>

/// A place in the text of a shader: in a file or in a macro.
struct KyShaderPlace {
    std::string file = {};   ///< path; empty in a macro, and where no place is known
    long line = 0;           ///< counted from 1; 0 for the whole file
    long column = 0;         ///< counted from 1; 0 where it is not known
    std::string macro = {};  ///< the line of a macro, as it was given; empty in a file

    bool isKnown() const { return !file.empty() || !macro.empty(); }
};

/// What is to be said of the text of a shader, by a driver or by the reader of files.
struct KyShaderMessage {
    enum class Severity {
        None,  ///< a line of a log that begins with none of the others
        Note,
        Warning,
        Error
    };
    enum class Topic {
        Driver,   ///< from the log of a driver
        File,     ///< a file that cannot be read
        Include,  ///< a directive that does not give what its author expects
        Version,  ///< a `#version` that is not first
        Style     ///< what may surprise in the text of a file
    };

    /// Where; none for a line that names no place, or none that was found: the text is then all of
    /// it. A message of a link names both files.
    std::vector<KyShaderPlace> places = {};
    Severity severity = Severity::None;
    std::string text = {};
    Topic topic = Topic::Driver;
    /// What explains it: the candidates of a call, the places that a file is included at.
    std::vector<KyShaderMessage> notes = {};
};

/// "error", "warning", "note" or "".
const char* toString(KyShaderMessage::Severity severity);

/// The place as editors know it, "file:line" or "file"; a macro has the name "-D TEXT".
std::string toString(const KyShaderPlace& place);

/// In the form that editors and compilers' users know: "file:line: severity: text", printable. Each
/// note follows after a line feed.
std::string toString(const KyShaderMessage& message);
