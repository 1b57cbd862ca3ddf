#pragma once

#include "ProgramList.h"
#include "UsageError.h"

#include <string>
#include <vector>

struct ExpandOptions {
    std::string root;
    std::string file;
    std::vector<std::string> macros;
    std::string output;  // empty: standard output
    std::string deps;    // empty: none
    bool lines = false;
    bool strict = false;  // a warning makes the status 1
};

struct CheckOptions {
    enum class Format { Text, Json, Sarif };
    std::string root;
    std::vector<std::string> macros;  // in front of those of every program
    bool raw = false;
    Format format = Format::Text;
    bool strict = false;              // as for `expand`
    std::string list;                 // empty: one program without a list
    std::string deps;                 // as for `expand`
    std::string stamp;                // written anew where the check is clean; empty: none
    bool skipWithoutDisplay = false;  // then nothing is checked, and the status is 0
};

/// Each returns the exit status, 0 or 1, and throws a `UsageError` for 2.
///@{
int expand(const ExpandOptions& options);
int check(const std::vector<Program>& programs, const CheckOptions& options);
/// Of a list. Ends by a signal only.
int watch(const CheckOptions& options);
///@}
