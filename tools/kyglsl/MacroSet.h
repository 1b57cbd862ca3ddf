#pragma once

#include <KyShaderOrigins.h>

#include <kygl/KyShaderMacro.h>

#include <string>
#include <vector>

/// What there is to warn of in macros as a user writes them.
std::vector<KyShaderMessage> macroWarnings(const std::vector<std::string>& texts);

/// The macros of one variant of a shader, kept by the library's own class.
class MacroSet {
public:
    /// Of equal texts the first one counts.
    explicit MacroSet(const std::vector<std::string>& texts);

    const std::vector<std::string>& texts() const { return mTexts; }

    /// What the GL is given for a file and these macros.
    KyString textFor(const KyShaderOrigins& file) const {
        return shaderText(mMacros, file.source());
    }
    /// The lines of that text in front of the file's.
    const KyString& lines() const { return mLines; }

private:
    KyShaderParametersMacros mMacros;
    std::vector<std::string> mTexts;
    KyString mLines;
};
