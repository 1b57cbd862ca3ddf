#include "MacroSet.h"

#include <algorithm>

std::vector<KyShaderMessage> macroWarnings(const std::vector<std::string>& texts) {
    constexpr const char* kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    std::vector<KyShaderMessage> all;
    for (const std::string& text : texts) {
        const std::size_t behindName = std::min(text.find_first_not_of(kLetters), text.size());
        if (behindName == 0 || text.compare(behindName, 1, "=") != 0) continue;
        std::string meant = text;
        meant[behindName] = ' ';
        KyShaderPlace place;
        place.macro = text;
        all.push_back({{place},
                       KyShaderMessage::Severity::Warning,
                       "'=' becomes part of the macro; write '" + meant + "'",
                       KyShaderMessage::Topic::Style});
    }
    return all;
}

MacroSet::MacroSet(const std::vector<std::string>& texts) {
    for (const std::string& text : texts)
        if (mMacros.pushMacro(text.c_str())) mTexts.push_back(text);
    mLines = mMacros.getDefineMacros();
}
