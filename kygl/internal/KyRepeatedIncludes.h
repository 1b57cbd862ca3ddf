#pragma once

#include "KyShaderOrigins.h"

/// Explains messages that something is defined a second time: where the file of their place came
/// into the text more than once, the directives that include it become notes.
/// @param messages of the compiler that was given the text of `file`
void kyExplainRepeatedIncludes(std::vector<KyShaderMessage>& messages, const KyShaderOrigins& file);
