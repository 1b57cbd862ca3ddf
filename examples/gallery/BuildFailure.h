#pragma once

#include <string>

/// Keeps what the library tells of builds that fail, for each thread its own. `KyShaderProgram`
/// itself says only that there is no program. Call it before the first build.
void watchBuilds();

/// What went wrong with the last build on this thread that failed, in one line: the file, the first
/// line of the driver's log, and the command that tells the line.
std::string lastBuildFailure();
