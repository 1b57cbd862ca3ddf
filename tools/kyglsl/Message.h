#pragma once

#include <stdexcept>
#include <string>

/// A line of a file, counted from 1. Line 0 stands for the file as a whole.
struct Place {
    std::string file;
    long line = 0;
};

/// What there is to say about a place. Without a severity it is a line of the driver's log that
/// names no place, and the text is all of it.
struct Message {
    Place place;
    std::string severity;  ///< "error", "warning" or empty
    std::string text;
};

/// In the form that editors and compilers' users know: "file:line: severity: text".
std::string toString(const Message& message);

/// The tool was used wrongly, or what it needs is not there.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
