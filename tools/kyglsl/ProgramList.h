#pragma once

#include "Message.h"

#include <string>
#include <vector>

/// What is to be built: a pair of shader files, and each list of macros that it is tried with.
struct Program {
    std::string vertex;
    std::string fragment;
    std::vector<std::vector<std::string>> macros;
    Place place = {};  // in a list
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
/// quotes. Throws a `UsageError` that names the line.
std::vector<Program> readProgramList(const std::string& path);
