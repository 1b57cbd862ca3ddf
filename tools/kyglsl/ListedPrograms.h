#pragma once

#include "ProgramList.h"

/// The programs of a list file, with names as `ShaderFiles` takes them: without a root they are
/// seen from the folder of the list. Throws a `UsageError`.
std::vector<Program> listedPrograms(const std::string& list, const std::string& root);
