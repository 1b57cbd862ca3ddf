#include "KyRepeatedIncludes.h"

#include <algorithm>

// In the words of Mesa, NVIDIA, AMD, Apple and glslang.
static bool speaksOfSecondDefinition(const std::string& text) {
    constexpr std::string_view kWords[] = {
        "redefined",          "redefinition",       "redeclared",           "redeclaration",
        "already defined",    "already declared",   "already has a body",   "already taken",
        "already a function", "previously defined", "previous declaration", "previously declared"};
    return std::any_of(std::begin(kWords), std::end(kWords), [&](std::string_view word) {
        const auto isSame = [](char a, char b) { return (a | 0x20) == (b | 0x20); };
        return std::search(text.begin(), text.end(), word.begin(), word.end(), isSame) !=
               text.end();
    });
}

void kyExplainRepeatedIncludes(std::vector<KyShaderMessage>& messages,
                               const KyShaderOrigins& file) {
    for (KyShaderMessage& message : messages) {
        if (message.places.empty() || !speaksOfSecondDefinition(message.text)) continue;
        for (KyShaderMessage& note : file.notesOfInclusions(message.places.front().file))
            message.notes.push_back(std::move(note));
    }
}
