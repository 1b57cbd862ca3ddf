#pragma once

#include "KyShaderMessage.h"
#include "KyShaderOrigins.h"

#include <string_view>

/// Where the text of a shader declares the uniform, varying, attribute, input or output `name`: the
/// offset of the name, or npos. A declaration that the preprocessor leaves out counts as well.
std::size_t kyFindDeclaration(std::string_view text, std::string_view name);

/// Moves a place of a link message from the whole file to the line that declares what the message
/// names, if there is one.
/// @param place of `message`, for the stage of these origins
void kyPlaceDeclaration(const KyShaderMessage& message, KyShaderPlace& place,
                        const KyShaderOrigins& origins);
