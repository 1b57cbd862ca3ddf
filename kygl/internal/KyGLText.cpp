#include <kygl/KyGLText.h>

#include "KyContextWatch.h"
#include "kyglBuildStamp.h"
#include "kyglCheck.h"
#include "kyglScopedLock.h"

#include <kygl/containers/KyDArray.h>
#include <kygl/containers/KyHashTable.h>
#include <kygl/kygl.h>
#include <kylib/KyEnvironment.h>
#include <kylib/KyHandable.h>
#include <kylib/KyResult.h>
#include <kylib/KyString.h>
#include <sogl/SoGLContext.h>
#include <sogl/SoGLEW.h>
#include <sogl/SoGLXEW.h>

#include <QString>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>

#include <GL/glx.h>
#include <X11/Xlib.h>

#include "KyTextDiagnosis.h"  // with the headers of X, whose macros break others
#include "KyXGlyph.h"

namespace {

constexpr char kSource[] = "internal/KyGLText";

Display* sDisplay = nullptr;
int sCacheContext = 0;
int sDefaultFontSize = 12;
KyString sDefaultFontFamily("helvetica");

// Guards the table of storages, every storage and every font. Recursive, because making a storage
// sets its defaults through the public operations. Comes before the registry's lock, which is taken
// inside it to learn the thread's context.
KyMutex sFontStorageMutex(true);

/// One font in one context.
struct TwMyFont {
    int mListBase = 0;  ///< list of character 0; 0: no lists, -1: the font failed to load
    int mDescent = 0;   ///< of a loaded font
    XFontStruct* mFont = nullptr;  ///< null if the font failed to load
    Display* mDisplay = nullptr;   ///< that was asked for it; null if there was none
    bool mIsOtherFamily = false;   ///< in the place of the one that was asked for

    bool hasLists() const { return mListBase != 0 && mListBase != -1; }
    // As many as the highest code asks for, so that the list of code c is the base plus c.
    int listCount() const { return static_cast<int>(mFont->max_char_or_byte2) + 1; }
    int height() const { return mFont->ascent + mFont->descent; }
    bool isAsAsked() const { return mFont != nullptr && !mIsOtherFamily; }
    KyTextDiagnosis diagnosis(const KyString& name) const {
        return {name.dataPtr(), mDisplay, mFont, mIsOtherFamily};
    }
};

/// The text settings and the fonts of one context. Lives as long as the process.
class TwFontStorage : public KyHandable {
public:
    int mAlignX = 0;
    int mAlignY = 0;
    int mOffsetX = 0;
    int mOffsetY = 0;
    float mBackground[4] = {};
    float mForeground[4] = {};
    TwMyFont* mActiveFont = nullptr;
    KyHashTable<KyString, TwMyFont*> mFonts{nullptr};  // by the name that was asked for

    bool hasFont() const { return mActiveFont != nullptr && mActiveFont->mFont != nullptr; }
};

// ---- storages

// The entry is in the table before its defaults are set, because setting them asks for it.
TwFontStorage* makeStorage(TwFontStorage*& entry) KY_REQUIRES(sFontStorageMutex) {
    auto made = std::make_unique<TwFontStorage>();
    entry = made.get();
    try {
        KyGLText::setAlignment(-1, -1);
        KyGLText::setBackground(0, 0, 0, 0);
        KyGLText::setForeground(1, 1, 1, 1);
        KyGLText::setPixelOffset(0, 0);
        KyGLText::setFont(KyGLText::defaultFontSize(), true, false, KyGLText::defaultFontFamily());
    } catch (...) {
        entry = nullptr;
        throw;
    }
    return made.release();
}

// What it returns may be used as long as the lock is held. Never null if `create`.
TwFontStorage* twGetFontStorage(bool create) KY_REQUIRES(sFontStorageMutex) {
    // Never destroyed, so that the storages stay in reach as long as they live.
    static auto& storage = *new KyHashTable<int, TwFontStorage*>(nullptr);
    const unsigned int id = kyglGetContext();
    const int key = id == KYGL_NO_CONTEXT ? KyGLText::cacheContext() : static_cast<int>(id);
    TwFontStorage*& entry = storage[key];
    if (entry == nullptr && create) return makeStorage(entry);
    return entry;
}

void store(float (&colour)[4], float r, float g, float b, float a) {
    colour[0] = r;
    colour[1] = g;
    colour[2] = b;
    colour[3] = a;
}

// ---- fonts

const char* weightOf(bool bold) {
    return bold ? "bold" : "medium";
}

const char* slantOf(bool italic) {
    return italic ? "i" : "r";
}

bool listsAreSwitchedOff() {
    return KyEnvironment::getBool(QStringLiteral("TWILAN_KYGLTEXT_NOGL"), false, true);
}

Display* fontDisplay() {
    if (sDisplay != nullptr) return sDisplay;
    return SoGLXEW::__glewXGetCurrentDisplay != nullptr ? SoGLXEW::__glewXGetCurrentDisplay()
                                                        : nullptr;
}

// The requested name, then any family with the same weight, slant and size.
XFontStruct* query(TwMyFont& made, const KyString& name, int size, bool bold, bool italic) {
    Display* const display = made.mDisplay = fontDisplay();
    if (display == nullptr) return nullptr;
    if (XFontStruct* const font = XLoadQueryFont(display, name.dataPtr())) return font;
    made.mIsOtherFamily = true;
    char anyFamily[256];
    std::snprintf(anyFamily, sizeof anyFamily, "-*-*-%s-%s-normal-*-%d-*-*-*-*-*-*-*",
                  weightOf(bold), slantOf(italic), size);
    return XLoadQueryFont(display, anyFamily);
}

bool hasInk(const XCharStruct& glyph) {
    return glyph.rbearing > glyph.lbearing && glyph.ascent + glyph.descent > 0;
}

// In a list Mesa drops a bitmap that is null, though it has no pixels to read.
void advance(int width) {
    static constexpr GLubyte kUnread = 0;
    glBitmap(0, 0, 0, 0, static_cast<float>(width), 0, &kUnread);
}

// Mesa's glXUseXFont leaves the list of a character empty where there is nothing to draw. These
// move the pen as XTextWidth counts: a code that the font lacks counts as its default character.
void makeListsWithoutInk(const XFontStruct& font, GLuint base) {
    const bool hasRows = font.max_byte1 > 0;
    const unsigned int row = hasRows ? font.default_char >> 8 : 0;
    const unsigned int column = hasRows ? font.default_char & 0xFF : font.default_char;
    const XCharStruct* const substitute = kyGlyphOf(font, row, column);
    for (unsigned int code = font.min_char_or_byte2; code <= font.max_char_or_byte2; ++code) {
        const XCharStruct* const glyph = kyGlyphOf(font, 0, code);
        if (glyph != nullptr ? hasInk(*glyph) : substitute == nullptr) continue;
        glNewList(base + code, GL_COMPILE);
        if (glyph == nullptr && row == 0)
            glCallList(base + column);
        else
            advance(glyph != nullptr ? glyph->width : substitute->width);
        glEndList();
    }
}

// Mesa's glXUseXFont also leaves an error pending, which the next check would take for a failure of
// what it checks. The result is of no interest, so neither is a lack of memory for its texts: the
// flags are read before that, and the lists are made.
void dropErrors() {
    try {
        KYGL_CHECK_GROUP(0);
    } catch (const std::bad_alloc&) {
    }
}

void makeLists(TwMyFont& font, GLuint base) {
    const int first = static_cast<int>(font.mFont->min_char_or_byte2);
    font.mListBase = static_cast<int>(base);
    glXUseXFont(font.mFont->fid, first, font.listCount() - first, font.mListBase + first);
    if (base != 0) makeListsWithoutInk(*font.mFont, base);
    dropErrors();
}

// For a font that was loaded without a context. Where the GL has no lists to give it is tried again
// at the next text, so nothing may be written to list 0 and on: they are the application's.
void makeMissingLists(TwMyFont& font) {
    if (font.hasLists() || listsAreSwitchedOff() || glXGetCurrentContext() == nullptr) return;
    const GLuint base = glGenLists(font.listCount());
    if (base == 0) return;
    makeLists(font, base);
    KyTextDiagnosis::endNoLists();
}

void load(TwMyFont& font, XFontStruct* found, bool withLists) {
    font.mFont = found;
    if (found == nullptr) {
        font.mListBase = -1;
        return;
    }
    font.mDescent = found->descent;
    if (withLists) makeLists(font, glGenLists(font.listCount()));
}

// @param font null where there was no memory for it
void release(const TwMyFont* font) {
    if (font == nullptr) return;
    if (font->hasLists()) glDeleteLists(static_cast<GLuint>(font->mListBase), font->listCount());
    delete font;
}

// ---- diagnosis

KyTextDiagnosis diagnosisOfActive(const TwFontStorage& storage) {
    for (int bucket = 0; bucket <= storage.mFonts.mask; ++bucket)
        for (auto* entry = storage.mFonts.buckets[bucket]; entry != nullptr; entry = entry->next)
            if (entry->value == storage.mActiveFont && entry->value != nullptr)
                return entry->value->diagnosis(entry->key);
    return {"", nullptr, nullptr, false};
}

// The lists of a font belong to the GL context of the id that the thread has set.
void judgeContext() {
    const unsigned int id = kyglGetContext();
    if (id == KYGL_NO_CONTEXT) return;
    KyContextWatch::judge(id, []() -> KyContextWatch::Operation {
        return {"KyGLText::render", "it draws by display lists that have the same names there",
                nullptr, nullptr, false};
    });
}

// A font that is missing was asked for perhaps before diagnostics were on.
void diagnose(const TwFontStorage& storage, const char* text) {
    if (!KyDiagnosis::wants(KyDiagnostics::Text)) return;
    if (!storage.hasFont()) return diagnosisOfActive(storage).judgeFont();
    const auto lacking = KyTextDiagnosis::bytesLacking(*storage.mActiveFont->mFont, text);
    if (lacking.any()) diagnosisOfActive(storage).reportBytes(lacking, text);
}

void diagnoseLists(const TwMyFont& font) {
    using NoLists = KyTextDiagnosis::NoLists;
    if (font.hasLists() || !KyDiagnosis::wants(KyDiagnostics::Text)) return;
    const bool hasContext = glXGetCurrentContext() != nullptr;
    KyTextDiagnosis::reportNoLists(listsAreSwitchedOff() ? NoLists::SwitchedOff
                                   : hasContext          ? NoLists::Refused
                                                         : NoLists::NoContext);
}

// ---- lines

/// One line of a text, and its size in pixels.
struct Line {
    const char* start;
    int length;
    int width;
    int height;
};

/// Steps through the lines of a text.
class LineReader {
public:
    explicit LineReader(const char* text) : mNext(text) {}

    /// The line from here on, without its break; its size is left at 0.
    /// @return false behind the last one
    bool next(Line& line) {
        if (mNext == nullptr) return false;
        const char* const end = findBreak(mNext);
        line = {mNext, static_cast<int>(end - mNext), 0, 0};
        if (*end != '\0') {
            const char* const behind = end + (*end == '\n' ? 1 : 2);
            mNext = *behind != '\0' ? behind : nullptr;
        } else {
            mNext = nullptr;
        }
        return true;
    }

    long count() const {
        long lines = 0;
        Line line{};
        for (LineReader rest = *this; rest.next(line);)
            ++lines;
        return lines;
    }

private:
    // The end of the text, a line feed, or a backslash directly followed by the letter n.
    static const char* findBreak(const char* at) {
        while (true) {
            at += std::strcspn(at, "\n\\");
            if (*at != '\\' || at[1] == 'n') return at;
            ++at;
        }
    }

    const char* mNext;
};

/// The lines of one call. A few need no allocation, more need one, however many they are.
class LineList {
public:
    long size() const { return mSize; }
    const Line& operator[](long i) const { return i < kFew ? mFew[i] : mMore[i - kFew]; }

    /// @param rest what follows the line
    void append(const Line& line, const LineReader& rest) {
        if (mSize < kFew) {
            mFew[mSize] = line;
        } else {
            if (mSize == kFew) mMore.reserve(1 + rest.count());
            mMore.append(line);
        }
        ++mSize;
    }

private:
    static constexpr long kFew = 8;

    Line mFew[kFew];
    KyDArray<Line> mMore;
    long mSize = 0;
};

/// What lies between a line of this height and the next.
int gapBelow(int height) {
    const double gap = height * 0.2 + 0.5;
    return static_cast<int>(gap);
}

// A font may lead backwards; no line is narrower than nothing.
int widthOf(const TwMyFont& font, const Line& line) {
    return std::max(0, XTextWidth(font.mFont, line.start, line.length));
}

int measure(const TwMyFont& font, const char* text, int& width, int& height) {
    const int lineHeight = font.height();
    int count = 0;
    Line line{};
    for (LineReader lines(text); lines.next(line); ++count) {
        if (count > 0) height += gapBelow(lineHeight);
        width = std::max(width, widthOf(font, line));
        height += lineHeight;
    }
    return count;
}

// ---- drawing

/// A move of the raster position, in pixels.
void move(float x, float y) {
    glBitmap(0, 0, 0, 0, x, y, nullptr);
}

/// One call of `render`: the lines of its text, and the two passes over them. What it needs is
/// allocated before it draws. Numbers are whole pixels until the GL takes them as floats.
class Drawing {
public:
    Drawing(const TwFontStorage& settings, const char* text)
        : mSettings(settings), mFont(*settings.mActiveFont) {
        breakText(text);
        if (hasBackground()) makeMask();
    }

    void draw(float x, float y, float z) {
        glListBase(static_cast<GLuint>(mFont.mListBase));
        if (hasBackground()) drawBackground(x, y, z);
        if (mSettings.mForeground[3] > 0) drawForeground(x, y, z);
        if (mBlends) {
            glPopAttrib();
            --mPushCount;
        }
        checkPushCount();
    }

private:
    static constexpr int kMargin = 2;  // a box reaches this far past its line on both sides

    bool hasBackground() const { return mSettings.mBackground[3] > 0; }
    static int boxWidth(const Line& line) { return line.width + 2 * kMargin; }

    void breakText(const char* text) {
        const int height = mFont.height();
        Line line{};
        for (LineReader lines(text); lines.next(line);) {
            line.width = widthOf(mFont, line);
            line.height = height;
            if (mLines.size() > 0) mHeight += gapBelow(height);
            mHeight += height;
            mLines.append(line, lines);
        }
    }

    // One for all lines: the bits of the largest box, in whole bytes.
    void makeMask() {
        long bytes = 0;
        for (long i = 0; i < mLines.size(); ++i) {
            const long width = boxWidth(mLines[i]);
            const long height = mLines[i].height;
            bytes = std::max(bytes, ((width | 7) + 1) * ((height | 7) + 1) / 8);
        }
        mMask.resize(bytes);
        std::memset(mMask.data, 0xFF, static_cast<std::size_t>(bytes));
    }

    float startShift() const {
        const auto height = static_cast<float>(mHeight);
        const auto descent = static_cast<float>(mFont.mDescent);
        if (mSettings.mAlignY == -1) return height;
        if (mSettings.mAlignY < 0) return height + descent + 1;
        if (mSettings.mAlignY == 0) return height * 0.5F + descent + 1;
        return descent + 1;
    }

    float lineShift(const Line& line) const {
        if (mSettings.mAlignX < 0) return 0;
        const auto width = static_cast<float>(line.width);
        return mSettings.mAlignX == 0 ? width * -0.5F : -width;
    }

    void pushBlending() {
        glPushAttrib(GL_ENABLE_BIT);
        ++mPushCount;
        glEnable(GL_BLEND);
        mBlends = true;
    }

    static void setBlendEquation() {
        const GLEWContextStruct* const flags = SoGLContext::glewGetCurrentContextIV(false);
        if (flags == nullptr) return;
        if (flags->VERSION_1_4 != 0)
            glBlendEquation(GL_FUNC_ADD);
        else if (flags->EXT_blend_minmax != 0)
            glBlendEquationEXT(GL_FUNC_ADD);
    }

    // The boxes start a descent below the line, so that descenders lie on them.
    void drawBackground(float x, float y, float z) {
        if (mSettings.mBackground[3] < 1) {
            pushBlending();
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            setBlendEquation();
        }
        glColor4fv(mSettings.mBackground);
        glRasterPos3f(x, y, z);
        move(static_cast<float>(mSettings.mOffsetX),
             static_cast<float>(mSettings.mOffsetY) + startShift() -
                 static_cast<float>(mFont.mDescent + 1) + 1);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
        glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
        for (long i = 0; i < mLines.size(); ++i) {
            const Line& line = mLines[i];
            const float shift = lineShift(line);
            move(shift - kMargin, static_cast<float>(-line.height));
            glBitmap(boxWidth(line), line.height, 0, 0, kMargin - shift,
                     static_cast<float>(-gapBelow(line.height)), mMask.data);
        }
    }

    // The lists move the pen by the width of their line; a font without lists leaves it.
    void drawForeground(float x, float y, float z) {
        if (mSettings.mForeground[3] < 1 && !mBlends) pushBlending();
        glColor4fv(mSettings.mForeground);
        glRasterPos3f(x, y, z);
        move(static_cast<float>(mSettings.mOffsetX),
             static_cast<float>(mSettings.mOffsetY) + startShift());
        for (long i = 0; i < mLines.size(); ++i) {
            const Line& line = mLines[i];
            const float shift = lineShift(line);
            move(shift, static_cast<float>(-line.height));
            if (mFont.hasLists()) glCallLists(line.length, GL_UNSIGNED_BYTE, line.start);
            const int drawn = mFont.hasLists() ? line.width : 0;
            move(static_cast<float>(-drawn) - shift, static_cast<float>(-gapBelow(line.height)));
        }
    }

    void checkPushCount() const {
        if (mPushCount == 0) return;
        const KyString detail(0, "assertion=[%s] %s", "pushcount == 0", kyglBuildStamp);
        KyResult(2, __LINE__, kSource, "", detail.dataPtr()).notify();
    }

    const TwFontStorage& mSettings;
    const TwMyFont& mFont;
    LineList mLines;
    KyDArray<unsigned char> mMask;
    int mHeight = 0;
    int mPushCount = 0;
    bool mBlends = false;  // by this call
};

// ---- wide text

// The result belongs to this function and is good until the next call. A character is converted
// aside because the locale, and with it the length of a character, may change between calls.
const char* wcharToChar(const wchar_t* text) {
    static char* result = nullptr;
    static std::size_t room = 0;
    const std::size_t count = std::wcslen(text) + 1;
    if (count > room) {
        void* const grown = std::realloc(result, count);
        if (grown == nullptr) throw std::bad_alloc();
        result = static_cast<char*>(grown);
        room = count;
    }
    for (std::size_t i = 0; i < count; ++i) {
        char converted[MB_LEN_MAX];
        result[i] = std::wctomb(converted, text[i]) == 1 ? converted[0] : '?';
    }
    return result;
}

}  // namespace

// ---- plain settings

void KyGLText::setDisplay(Display* display) {
    sDisplay = display;
}

Display* KyGLText::display() {
    return sDisplay;
}

void KyGLText::setCacheContext(int context) {
    sCacheContext = context;
}

int KyGLText::cacheContext() {
    return sCacheContext;
}

void KyGLText::setDefaultFontSize(int size) {
    sDefaultFontSize = size;
}

int KyGLText::defaultFontSize() {
    return sDefaultFontSize;
}

void KyGLText::setDefaultFontFamily(const char* family) {
    sDefaultFontFamily = KyString(family);
}

const char* KyGLText::defaultFontFamily() {
    return sDefaultFontFamily.dataPtr();
}

int KyGLText::availablePointSizes(int* sizes, int maxSizes, const char* family, bool bold,
                                  bool italic) {
    if (sDisplay == nullptr) return 0;
    const KyString pattern(0, "-*-%s-%s-%s-normal-*-*-*-*-*-*-*-*-*", family, weightOf(bold),
                           slantOf(italic));
    int count = 0;
    const std::unique_ptr<char*, int (*)(char**)> names(
        XListFonts(sDisplay, pattern.dataPtr(), 100, &count), XFreeFontNames);
    KyDArray<int> found;
    KyDArray<KyString> fields;
    for (int i = 0; names != nullptr && i < count; ++i) {
        constexpr int kPixelSize = 7;  // behind the empty piece in front of the leading dash
        KyString(names.get()[i]).explode('-', fields);
        if (fields.size <= kPixelSize) continue;
        int size = 0;
        // A field that is no number, or 0 for a scalable font, is no size.
        if (std::sscanf(fields[kPixelSize].dataPtr(), "%d", &size) != 1 || size == 0) continue;
        if (found.findSorted(size, kyStandardCompare<int>) < 0)
            found.insertSorted(size, kyStandardCompare<int>);
    }
    const int written = std::clamp(static_cast<int>(found.size), 0, std::max(maxSizes, 0));
    std::copy_n(found.data, written, sizes);
    return written;
}

// ---- settings of a context

// A font that failed stays in the table, so that the server is not asked for it in every frame.
void KyGLText::setFont(int size, bool bold, bool italic, const char* family) {
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    TwFontStorage* const storage = twGetFontStorage(true);
    const KyString name(0, "-*-%s-%s-%s-normal-*-%d-*-*-*-*-*-*-*", family, weightOf(bold),
                        slantOf(italic), size);
    TwMyFont*& entry = storage->mFonts[name];
    const bool withLists = !listsAreSwitchedOff();
    const bool isNew = entry == nullptr;
    if (isNew) {
        auto made = std::make_unique<TwMyFont>();
        const bool hasContext = withLists && glXGetCurrentContext() != nullptr;
        load(*made, query(*made, name, size, bold, italic), hasContext);
        entry = made.release();
    }
    storage->mActiveFont = entry;
    if (isNew || !entry->isAsAsked()) entry->diagnosis(name).judgeFont();
}

void KyGLText::setAlignment(int horizontal, int vertical) {
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    TwFontStorage* const storage = twGetFontStorage(true);
    storage->mAlignX = horizontal;
    storage->mAlignY = vertical;
}

void KyGLText::setForeground(float r, float g, float b, float a) {
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    store(twGetFontStorage(true)->mForeground, r, g, b, a);
}

void KyGLText::setBackground(float r, float g, float b, float a) {
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    store(twGetFontStorage(true)->mBackground, r, g, b, a);
}

void KyGLText::setPixelOffset(int x, int y) {
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    TwFontStorage* const storage = twGetFontStorage(true);
    storage->mOffsetX = x;
    storage->mOffsetY = y;
}

// ---- drawing and measuring

void KyGLText::render(float x, float y, float z, const char* text) {
    if (KyDiagnosis::isOn()) judgeContext();
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    TwFontStorage* const storage = twGetFontStorage(true);
    diagnose(*storage, text);
    if (!storage->hasFont() || storage->mActiveFont->mListBase < 0) return;
    Drawing drawing(*storage, text);
    makeMissingLists(*storage->mActiveFont);
    diagnoseLists(*storage->mActiveFont);
    drawing.draw(x, y, z);
}

void KyGLText::render(float x, float y, float z, const wchar_t* text) {
    render(x, y, z, wcharToChar(text));
}

int KyGLText::textExtent(const char* text, int& width, int& height) {
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    const TwFontStorage* const storage = twGetFontStorage(true);
    diagnose(*storage, text);
    width = 0;
    height = 0;
    return storage->hasFont() ? measure(*storage->mActiveFont, text, width, height) : 0;
}

int KyGLText::textExtent(const wchar_t* text, int& width, int& height) {
    return textExtent(wcharToChar(text), width, height);
}

bool KyGLText::wcharSupported() {
    return false;
}

int KyGLText::fontBase(int size) {
    const KyDiagnosis::Postponed delivery;
    const KyScopedLock hold(sFontStorageMutex);
    setFont(size, true, false, defaultFontFamily());
    return twGetFontStorage(true)->mActiveFont->mListBase;
}

void KyGLText::cleanUp() {
    const KyScopedLock hold(sFontStorageMutex);
    TwFontStorage* const storage = twGetFontStorage(false);
    if (storage == nullptr) return;
    // Not by the table's cursor, which copies keys and may run out of memory on the way.
    for (int bucket = 0; bucket <= storage->mFonts.mask; ++bucket)
        for (auto* entry = storage->mFonts.buckets[bucket]; entry != nullptr; entry = entry->next)
            release(entry->value);
    storage->mFonts.removeAll();
    storage->mActiveFont = nullptr;
}
