#include "KyTextDiagnosis.h"

#include "KyPrintable.h"
#include "KyXGlyph.h"

#include <kygl/kygl.h>
#include <kygl/KyGLText.h>

#include <cstdio>
#include <memory>
#include <string_view>

#include <X11/Xatom.h>

namespace {

using Severity = KyDiagnostics::Severity;
using Bytes = KyTextDiagnosis::Bytes;

// The context's own subjects: fonts and lists belong to one.
std::string subject(const char* kind, const std::string& of = "") {
    return "text|" + std::string(kind) + '|' + std::to_string(kyglGetContext()) + '|' + of;
}

/// What `setFont` was asked for, from "-*-family-bold-i-normal-*-12-*-*-*-*-*-*-*". Read from the
/// end: a family may hold dashes, and a size its sign.
struct Asked {
    std::string family, weight, slant, size;

    explicit Asked(std::string name) {
        constexpr std::string_view kInFront = "-*-";
        constexpr std::string_view kBetween = "-normal-*-";
        constexpr std::string_view kBehind = "-*-*-*-*-*-*-*";
        const std::size_t between = name.rfind(kBetween);
        name.erase(name.size() - kBehind.size());
        size = name.substr(between + kBetween.size());
        name.erase(between);
        slant = takeField(name);
        weight = takeField(name);
        family = name.substr(kInFront.size());
    }

    bool isItalic() const { return slant == "i"; }
    bool isDefault() const {
        return family == KyGLText::defaultFontFamily() && weight == "bold" && !isItalic() &&
               size == std::to_string(KyGLText::defaultFontSize());
    }
    std::string shown() const {
        return "the font '" + family + "' (" + size + " pixels" +
               (weight == "bold" ? ", bold" : "") + (isItalic() ? ", italic)" : ")");
    }

private:
    static std::string takeField(std::string& name) {
        const std::size_t dash = name.rfind('-');
        std::string field = name.substr(dash + 1);
        name.erase(dash);
        return field;
    }
};

std::string shownBytes(const Bytes& bytes) {
    constexpr std::size_t kMost = 16;
    std::string all;
    std::size_t count = 0;
    for (unsigned int code = 0; code < bytes.size() && count < kMost; ++code) {
        if (!bytes[code]) continue;
        char hexadecimal[8];
        std::snprintf(hexadecimal, sizeof hexadecimal, " 0x%02X", code);
        all += hexadecimal;
        ++count;
    }
    if (bytes.count() > kMost) all += " and " + std::to_string(bytes.count() - kMost) + " more";
    return all;
}

bool isUtf8(const std::string& text) {
    bool hasSeveral = false;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t length = kyUtf8Length(text, at);
        if (length == 0) return false;
        hasSeveral = hasSeveral || length > 1;
        at += length;
    }
    return hasSeveral;
}

std::string adviceFor(const Bytes& lacking, const char* text) {
    std::string advice;
    if (lacking['\r']) advice += "; take '\\r' out, a line ends at '\\n' alone";
    if (lacking['\t']) advice += "; put spaces for tabs";
    if (isUtf8(text))
        advice +=
            "; the text is UTF-8, but text here is 8-bit, one glyph a byte, so that a "
            "character of several bytes shows as several: convert the text to the font's character "
            "set, such as "
            "ISO 8859-1";
    if (!advice.empty()) return advice;
    return "; text is 8-bit, one glyph a byte: leave these bytes out, or set a font that has them";
}

std::string adviceOf(KyTextDiagnosis::NoLists why) {
    switch (why) {
        case KyTextDiagnosis::NoLists::SwitchedOff:
            return "TWILAN_KYGLTEXT_NOGL in the environment switches the display lists of fonts "
                   "off: "
                   "unset it";
        case KyTextDiagnosis::NoLists::NoContext:
            return "no GLX context is current on this thread, and one of EGL does not do: make a "
                   "GLX "
                   "context current first; in Qt, run on X11 with QT_QPA_PLATFORM=xcb and "
                   "QT_XCB_GL_INTEGRATION=xcb_glx";
        default:
            return "glGenLists gives no display lists, as in a core profile, which has none: ask "
                   "for a "
                   "compatibility profile when the GL context is made, and do not call render "
                   "between "
                   "glBegin and glEnd";
    }
}

}  // namespace

void KyTextDiagnosis::judgeFont() const {
    const auto ofFont = [&] { return subject("font", mName); };
    if (mFont != nullptr && !mIsOtherFamily)
        KyDiagnosis::ended(KyDiagnostics::Text, ofFont);
    else
        KyDiagnosis::report(KyDiagnostics::Text, [&] {
            return KyFinding{ofFont(), {fontMessage()}, kyglGetContext()};
        });
}

KyFinding::Message KyTextDiagnosis::fontMessage() const {
    if (*mName == '\0')
        return {Severity::Error,
                "KyGLText::cleanUp left this context without a font: text draws nothing and "
                "measures 0; call KyGLText::setFont first"};
    const Asked asked(mName);
    const std::string ofDefault =
        asked.isDefault() ? ", the default that the first use of text in a context loads" : "";
    const std::string font = asked.shown() + ofDefault;
    const std::string again =
        "then KyGLText::cleanUp and setFont: without cleanUp it is not asked "
        "for again";
    if (mDisplay == nullptr)
        return {Severity::Error, font + (ofDefault.empty() ? "" : ",") +
                                     " was asked for without an X display: text in it draws "
                                     "nothing and measures 0; call KyGLText::setDisplay, or "
                                     "make a GLX context current, " +
                                     again};
    std::string advice =
        "; xlsfonts and KyGLText::availablePointSizes list what it has, and packages such as "
        "xfonts-75dpi and xfonts-100dpi add to it";
    if (asked.isDefault())
        advice += "; KyGLText::setDefaultFontFamily and setDefaultFontSize set another default";
    if (asked.isItalic())
        advice +=
            "; italic asks for the slant 'i', and a family with 'o' alone, such as "
            "helvetica, does not count";
    if (mFont != nullptr)
        return {Severity::Warning, "the X server lacks " + font +
                                       ", so text shows in a font of another family, " + nameGot() +
                                       advice};
    return {Severity::Error,
            "the X server lacks " + font +
                ", and any family of this size, weight and slant: text in it draws "
                "nothing and measures 0" +
                advice + "; set another font, or add it, " + again};
}

// A font has its full name as an atom in a property of its own.
std::string KyTextDiagnosis::nameGot() const {
    unsigned long atom = 0;
    if (XGetFontProperty(mFont, XA_FONT, &atom) == 0) return "which has no name";
    const std::unique_ptr<char, int (*)(void*)> name(XGetAtomName(mDisplay, atom), XFree);
    return name != nullptr ? name.get() : "which has no name";
}

void KyTextDiagnosis::reportBytes(const Bytes& lacking, const char* text) const {
    KyDiagnosis::report(KyDiagnostics::Text, [&] {
        std::string message = Asked(mName).shown() +
                              " lacks bytes of a text:" + shownBytes(lacking) +
                              "; they show as its default character or not at all";
        if ((lacking >> (mFont->max_char_or_byte2 + 1)).any())
            message += ", and those beyond its last code call display lists that are not its own";
        const std::string ofBytes = mName + ('|' + lacking.to_string());
        return KyFinding{subject("bytes", ofBytes),
                         {{Severity::Warning, message + adviceFor(lacking, text)}},
                         kyglGetContext(),
                         "lacking"};
    });
}

Bytes KyTextDiagnosis::bytesLacking(const XFontStruct& font, const char* text) {
    Bytes lacking;
    for (const char* at = text; *at != '\0'; ++at) {
        const auto code = static_cast<unsigned char>(*at);
        if (code == '\\' && at[1] == 'n')
            ++at;
        else if (code != '\n' && kyGlyphOf(font, 0, code) == nullptr)
            lacking.set(code);
    }
    return lacking;
}

void KyTextDiagnosis::reportNoLists(NoLists why) {
    KyDiagnosis::report(KyDiagnostics::Text, [&] {
        return KyFinding{subject("lists"),
                         {{why == NoLists::SwitchedOff ? Severity::Warning : Severity::Error,
                           "render draws no characters: " + adviceOf(why)}},
                         kyglGetContext()};
    });
}

void KyTextDiagnosis::endNoLists() {
    KyDiagnosis::ended(KyDiagnostics::Text, [] { return subject("lists"); });
}
