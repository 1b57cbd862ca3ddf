#pragma once

#include "KyDiagnosis.h"

#include <bitset>

#include <X11/Xlib.h>  // last: its macros break others

/// Reports to `KyDiagnostics` why a text does not show as it was asked for, in the calling thread's
/// context. It needs the lock of text; an operation that takes this postpones what is reported.
class KYGL_LOCAL KyTextDiagnosis {
public:
    using Bytes = std::bitset<256>;

    enum class NoLists {
        SwitchedOff,  ///< by the environment
        NoContext,    ///< no GLX context is current
        Refused       ///< by the GL
    };

    /// @param name pattern that `setFont` makes of what it is asked for; empty where no font is set
    /// @param display that was asked for the font; null if there was none
    /// @param font null if it was not found
    /// @param isOtherFamily whether it took the place of the one that was asked for
    KyTextDiagnosis(const char* name, Display* display, XFontStruct* font, bool isOtherFamily)
        : mName(name), mDisplay(display), mFont(font), mIsOtherFamily(isOtherFamily) {}

    /// Reports a font that is not the one asked for, or that this fault is over. Asks the X server
    /// for the name of another family's font.
    void judgeFont() const;

    /// Reports bytes of a text that the font lacks.
    void reportBytes(const Bytes& lacking, const char* text) const;

    /// What a text has and the font lacks, apart from line breaks. Allocates nothing.
    static Bytes bytesLacking(const XFontStruct& font, const char* text);

    /// Reports that `render` has no display lists to draw characters with.
    static void reportNoLists(NoLists why);
    /// Reports that it has them now.
    static void endNoLists();

private:
    std::string nameGot() const;
    KyFinding::Message fontMessage() const;

    const char* mName;
    Display* mDisplay;
    XFontStruct* mFont;
    bool mIsOtherFamily;
};
