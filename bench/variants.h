#pragma once

#include <string>
#include <vector>

/// Sets of seven macros that differ in their last one, as the subjects on variants share them.

inline const std::vector<std::string> kFixedMacros = {
    "ENABLE_CLIPVERTEX", "FOG", "NORMAL_MAP", "SHADOWS 2", "CONTOURS", "PALETTE 256"};

inline std::string lastMacro(std::size_t set) {
    return "LIGHTS " + std::to_string(set + 1);
}

/// The key of a variant in a table of the caller's own.
inline std::string textKey(unsigned int context, const std::vector<std::string>& macros) {
    std::string text = std::to_string(context);
    for (const std::string& macro : macros) {
        text += '\n';
        text += macro;
    }
    return text;
}
