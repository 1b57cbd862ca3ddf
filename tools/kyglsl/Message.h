#pragma once

#include <stdexcept>
#include <string>

/// A line of a file, counted from 1. Line 0 stands for the file as a whole.
struct Place {
    std::string file;
    long line = 0;
};

/// What there is to say about a place. Without a file it names none, as some lines of a driver's
/// log, and the text is all of it.
struct Message {
    Place place;
    std::string severity;  ///< "error", "warning", or empty for a line of a log that is neither
    std::string text;
};

/// In the form that editors and compilers' users know: "file:line: severity: text", printable.
std::string toString(const Message& message);

/// The tool was used wrongly, or what it needs is not there.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
