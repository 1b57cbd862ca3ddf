#pragma once

#include <string>

/// The text of a shader file with its `#include` directives expanded; empty when the file cannot
/// be read. Included files are looked for beside the file at `path`, at every depth. Time is
/// linear in what is read; the bounds on depth and size are told at `KyShader::loadFromFile`.
std::string loadShader(const char* path);
