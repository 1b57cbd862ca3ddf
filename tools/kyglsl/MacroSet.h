#pragma once

#include "ExpandedFile.h"

#include <kygl/KyShaderMacro.h>

#include <string>
#include <vector>

/// What there is to warn of in macros as a user writes them.
std::vector<Message> macroWarnings(const std::vector<std::string>& texts);

/// The macros of one variant of a shader, kept by the library's own class.
class MacroSet {
public:
    /// Of equal texts the first one counts.
    explicit MacroSet(const std::vector<std::string>& texts);

    const std::vector<std::string>& texts() const { return mTexts; }

    /// What the GL is given for a file and these macros.
    KyString textFor(const ExpandedFile& file) const { return shaderText(mMacros, file.source()); }
    /// Where a line of that text comes from. A macro counts as a file with the name "-D TEXT".
    /// Without such a line the file is "".
    Place placeOfLine(const ExpandedFile& file, long line) const;

private:
    KyShaderParametersMacros mMacros;
    std::vector<std::string> mTexts;
    std::vector<long> mFirstLines;  // of each text in the macro block
    long mLines = 0;
};
