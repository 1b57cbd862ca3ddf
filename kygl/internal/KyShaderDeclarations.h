#pragma once

#include "KyShaderMessage.h"
#include "KyShaderOrigins.h"

#include <string_view>

/// Where the text of a shader declares the uniform, varying, attribute, input or output `name`: the
/// offset of the name, or npos. A declaration that the preprocessor leaves out counts as well.
std::size_t kyFindDeclaration(std::string_view text, std::string_view name);

/// Moves the places of link messages from whole files to the lines that declare what they name.
/// @param vertex,fragment what the first and the second place are in; may be null
void kyPlaceDeclarations(std::vector<KyShaderMessage>& messages, const KyShaderOrigins* vertex,
                         const KyShaderOrigins* fragment);
