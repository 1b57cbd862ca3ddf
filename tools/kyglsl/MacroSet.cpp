#include "MacroSet.h"

#include <algorithm>

std::vector<Message> macroWarnings(const std::vector<std::string>& texts) {
    constexpr const char* kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_";
    std::vector<Message> all;
    for (const std::string& text : texts) {
        const std::size_t behindName = std::min(text.find_first_not_of(kLetters), text.size());
        if (behindName == 0 || text.compare(behindName, 1, "=") != 0) continue;
        std::string meant = text;
        meant[behindName] = ' ';
        const Place place{"-D " + text, 0};
        all.push_back({place, "warning", "'=' becomes part of the macro; write '" + meant + "'"});
    }
    return all;
}

MacroSet::MacroSet(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
        if (!mMacros.pushMacro(text.c_str())) continue;
        mTexts.push_back(text);
        mFirstLines.push_back(mLines + 1);
        mLines += 1 + std::count(text.begin(), text.end(), '\n');
    }
}

Place MacroSet::placeOfLine(const ExpandedFile& file, long line) const {
    if (line < 1 || line > mLines + file.lineCount()) return {};
    if (line > mLines) return file.placeOfLine(line - mLines);
    const auto next = std::upper_bound(mFirstLines.begin(), mFirstLines.end(), line);
    const std::string& text = mTexts[static_cast<std::size_t>(next - mFirstLines.begin() - 1)];
    return {"-D " + text.substr(0, text.find('\n')), line + 1 - *(next - 1)};
}
