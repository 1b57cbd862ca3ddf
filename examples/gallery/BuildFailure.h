#pragma once

#include <string>

/// Keeps what the library tells of builds that fail, for each thread its own. `KyShaderProgram`
/// itself says only that there is no program. Call it before the first build.
void watchBuilds();

/// The first error of the last build on this thread that failed, in one line: "file:line: error:
/// text".
std::string lastBuildFailure();
