#pragma once

#include <kygl/kyglApi.h>

struct _XDisplay;

/// Multi-line bitmap text with X server fonts, drawn into the current GL context at a 3D position,
/// and its size in pixels.
///
/// The settings (font, alignment, colours, pixel offset) belong to the calling thread's context by
/// the registry's account, `kyglSetContext`; threads without one share those of `cacheContext`. A
/// context's settings come into being with its first use of text, which loads the default font, and
/// live as long as the process. A font is loaded once for each context and becomes display lists of
/// that context.
///
///     KyGLText::setFont(18, true, false, "helvetica");
///     KyGLText::setAlignment(0, 1);                      // centred, below the point
///     KyGLText::setBackground(0.0f, 0.0f, 0.0f, 0.5f);
///     KyGLText::render(x, y, z, "Frozen Head\n1,008 m");
///
/// Text is 8-bit and ends at its NUL. A line ends at a line feed or at the two bytes `\` `n`; a
/// break at the very end makes no further line. Sizes and lengths are to stay within an `int`.
///
/// A byte moves the pen by the width that `textExtent` counts for it: that of its glyph or, if the
/// font lacks it, that of the font's default character. This holds from the first to the last code
/// of the font (`min_char_or_byte2` and `max_char_or_byte2` of its XFontStruct). Filter other
/// bytes, such as control characters: a lower one is counted, but draws nothing and does not move
/// the pen, and a higher one calls a list that is not the font's.
///
/// Display lists are made by whatever loads a font: `setFont`, or the first use of text in a
/// context, be it a setter; and by the first `render` of a font that has none. Mesa's `glXUseXFont`
/// then leaves GL_OUT_OF_MEMORY pending. An error check takes this error, and any that the
/// application left pending, and its result is dropped: check your own calls before. A list that
/// the application is compiling ends where a font's lists are made, and while a buffer is bound to
/// GL_PIXEL_UNPACK_BUFFER Mesa's `glXUseXFont` crashes.
///
/// Any thread may call. One lock serialises all drawing and measuring; it is held across the GL and
/// X calls, and the registry's lock is taken inside it. The plain settings that say so take no
/// lock: keep them apart from text in other threads. Without a font there is no output, and extents
/// are 0; nothing reports a failure, unless `KyDiagnostics` is on: it names a font that is missing
/// or of another family, bytes that a font lacks, and why characters have no display lists. A
/// failed allocation leaves as `std::bad_alloc`, before anything is drawn.
class KYGL_API KyGLText {
public:
    KyGLText() = delete;

    /// The X display for all font work, null at start; then `setFont` takes that of the current GLX
    /// context. Fonts belong to the connection, which stays open as long as they are used. The
    /// library locks out its own threads only, so an application that uses this connection
    /// elsewhere calls `XInitThreads` first. No lock.
    ///@{
    static void setDisplay(_XDisplay* display);
    static _XDisplay* display();
    ///@}

    /// Pixel sizes that the server's bitmap fonts offer for a family, ascending, each once. Looks
    /// at the first 100 names that match; a family with more can lose some. Asks the X server at
    /// every call. Needs `setDisplay` and no GL. No lock.
    /// @param sizes room for `maxSizes` values; when it is short, the smallest sizes win
    /// @param family as the server spells it, not null
    /// @return number of sizes written; 0 without a display
    static int availablePointSizes(int* sizes, int maxSizes, const char* family, bool bold,
                                   bool italic);

    /// The key of the settings for threads without a context id, 0 at start: then they are those of
    /// context 0. No lock.
    ///@{
    static void setCacheContext(int context);
    static int cacheContext();
    ///@}

    /// Size in pixels and family of the first font of every context, which is bold and upright: 12
    /// and "helvetica" at start. They act on contexts that have not used text yet, and the
    /// family on `fontBase`. The family is copied; null gives "". The text that `defaultFontFamily`
    /// returns is valid until the next `setDefaultFontFamily`. No lock.
    ///@{
    static void setDefaultFontSize(int size);
    static int defaultFontSize();
    static void setDefaultFontFamily(const char* family);
    static const char* defaultFontFamily();
    ///@}

    /// Makes a font current in the calling thread's context, loading it the first time. Where the
    /// server lacks the family, any family of that size, weight and slant is taken. A font that
    /// cannot be loaded becomes current all the same, so that text disappears and extents are 0,
    /// and the server is not asked for it again until `cleanUp`. Italic asks for the slant "i"; a
    /// family that is oblique instead, such as Adobe's helvetica, counts as lacking it.
    ///
    /// A font that is loaded while no GLX context is current, or with TWILAN_KYGLTEXT_NOGL true in
    /// the environment (see `KyEnvironment::getBool`), has no display lists, and `textExtent`
    /// works. Its lists are made by the first `render` that finds a context and the variable off:
    /// an application that measures before it draws would lose its text otherwise. Until then
    /// `render` draws its boxes and leaves the characters out.
    ///
    /// GL calls when lists are made: `glGenLists` and those of `glXUseXFont`; for each code without
    /// ink or glyph, whose list Mesa leaves empty, `glNewList`, `glBitmap` or `glCallList`, and
    /// `glEndList`; and an error check. If `glGenLists` returns 0, the font has no lists: `setFont`
    /// still makes the calls of `glXUseXFont` and the check, `render` makes none.
    /// @param size in pixels
    /// @param family as the server spells it, not null
    static void setFont(int size, bool bold, bool italic, const char* family);

    /// Alignment of each line (`horizontal`) and of the block (`vertical`) at the position.
    /// @param horizontal below 0: a line starts there; 0: it is centred; above 0: it ends there
    /// @param vertical -1: the last baseline lies there; below -1: the lowest descender lies just
    ///     above; 0: the block is centred; above 0: it hangs below
    static void setAlignment(int horizontal, int vertical);

    /// Colours of the characters and of the box behind each line; opaque white and none at start.
    /// Alpha 0 or less leaves them out, 1 or more draws them as they are, between they are blended.
    ///@{
    static void setForeground(float r, float g, float b, float a);
    static void setBackground(float r, float g, float b, float a);
    ///@}

    /// Shifts what is drawn, in screen pixels to the right and up.
    static void setPixelOffset(int x, int y);

    /// Draws a text. Needs a current GL context; for a background GL_UNPACK_SKIP_PIXELS 0 and no
    /// pixel unpack buffer, as they are at start.
    ///
    /// Leaves behind: the current colour, the raster position and the list base; where there was a
    /// background the unpack alignment, row length and skipped rows; where that was translucent
    /// the blend function and equation. Depth test, lighting, texturing and the like act on text as
    /// on everything else, and nothing shows where the position is clipped. A translucent
    /// foreground over an opaque or no background is blended with the function that the GL state
    /// holds. The blend equation is set as the toolkit's flags of the context allow, and left alone
    /// without a toolkit context. GL errors are not looked at, unless a font's lists are made.
    /// Compiled into a display list, text loses its moves on Mesa, which drops null bitmaps there.
    /// @param text not null
    ///@{
    static void render(float x, float y, float z, const char* text);
    static void render(float x, float y, float z, const wchar_t* text);
    ///@}

    /// Size of a text block in pixels. Needs no GL context.
    /// @param text not null
    /// @param width,height of the block; 0 without a font
    /// @return number of lines; 0 without a font
    ///@{
    static int textExtent(const char* text, int& width, int& height);
    static int textExtent(const wchar_t* text, int& width, int& height);
    ///@}

    /// Always false: wide text is converted to 8-bit text by the process's locale, one byte for
    /// each character, `?` where the character takes more or has none. The wide forms are for one
    /// thread at a time.
    static bool wcharSupported();

    /// Makes the default family in this size current, bold and upright.
    /// @return the list of character 0; -1 if the font cannot be had, 0 if it has no lists
    static int fontBase(int size);

    /// Forgets the fonts of the calling thread's context and deletes their display lists, so that
    /// GL context must be current. Its other settings stay; there is no font until the next
    /// `setFont`. The X fonts themselves stay loaded. Call it before a GL context goes whose id
    /// another one will get: that one would draw with the lists of the old.
    static void cleanUp();
};
