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
        const auto lines = 1 + std::count(text.begin(), text.end(), '\n');
        for (long line = 1; line <= lines; ++line)
            mPlaces.push_back({"-D " + text.substr(0, text.find('\n')), line});
    }
}

std::string MacroSet::toString() const {
    std::string all;
    for (const std::string& text : mTexts)
        all += (all.empty() ? "" : "; ") + text;
    return all;
}

Place MacroSet::placeOfLine(const ExpandedFile& file, long line) const {
    const auto macroLines = static_cast<long>(mPlaces.size());
    if (line < 1 || line > macroLines + file.lineCount()) return {};
    if (line <= macroLines) return mPlaces[static_cast<std::size_t>(line - 1)];
    return file.placeOfLine(line - macroLines);
}
