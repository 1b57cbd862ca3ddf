#pragma once

#include <string>

class KyShaderParametersMacros;

/// The folder below "share/shaders/" that holds the gallery's shader files. Their directives stand
/// one to a line, with the file name behind them.
inline const char kShaderFolder[] = "gallery";

/// Throws `std::runtime_error` that names file, line and reason when a shader file, or one that it
/// includes, cannot be read. `KyShader` itself would go on without it.
void checkShaderFile(const std::string& file);

/// Builds a pair of shaders once more, step by step, and throws what went wrong: file, line and the
/// driver's own words. `KyShaderProgram` tells only that something did. The GL context is current
/// and about to go: what is built here goes with it.
[[noreturn]] void explainFailure(const std::string& vertexFile, const std::string& fragmentFile,
                                 const KyShaderParametersMacros& macros);
