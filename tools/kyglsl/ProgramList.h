#pragma once

#include "UsageError.h"

#include <KyShaderMessage.h>

#include <string>
#include <vector>

/// The most in a line of a list, and the most of -D: the library compares each macro with all
/// others.
constexpr std::size_t kMaxMacros = 1000;

/// A line of macros, for each choice of its switches.
class MacroLine {
public:
    /// Those of one line, after the word "macros". Throws a `UsageError`.
    explicit MacroLine(const std::string& line = {});

    bool isEmpty() const { return mMacros.empty(); }
    unsigned long choices() const { return 1UL << mSwitches; }
    /// The macros of a choice, in their order. Bit i of it turns switch i on: the last choice has
    /// all macros.
    std::vector<std::string> macros(unsigned long choice) const;

private:
    struct Macro {
        std::string text;
        bool isSwitch;
    };
    std::vector<Macro> mMacros;
    unsigned long mSwitches = 0;
};

/// What is to be built: a pair of shader files, or one of them with a stand-in of the other, with
/// each choice of each line of macros.
struct Program {
    std::string vertex;    // empty: a stand-in
    std::string fragment;  // empty: a stand-in
    std::vector<MacroLine> lines;
    KyShaderPlace place = {};  // in a list

    std::string name() const;  ///< the names of its files
    unsigned long variants() const;
};

/// Reads a list of programs:
///
///     # the terrain
///     program terrain.vert terrain.frag
///     macros  RELIEF; [CONTOURS]; LIGHTS 3; [FOG]
///
/// A line "macros" belongs to the program above it and may stand there more than once; a program
/// without any is built without macros. Macros in brackets are switches: the line stands for every
/// choice of them, four here, that without any first. File names with blanks stand in double
/// quotes. Throws a `UsageError` that names the line. The bounds are those that the manual page
/// lists.
std::vector<Program> readProgramList(const std::string& path);

/// The same for a text. @param path what messages name
std::vector<Program> parseProgramList(const std::string& text, const std::string& path);
