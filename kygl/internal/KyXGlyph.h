#pragma once

#include <X11/Xlib.h>

/// What the font has for a character, as Xlib looks it up; null if it has nothing. Row 0 is that of
/// 8-bit text, and the only one of a font whose codes are single numbers.
inline const XCharStruct* kyGlyphOf(const XFontStruct& font, unsigned int row,
                                    unsigned int column) {
    if (row < font.min_byte1 || row > font.max_byte1) return nullptr;
    if (column < font.min_char_or_byte2 || column > font.max_char_or_byte2) return nullptr;
    if (font.per_char == nullptr) return &font.min_bounds;
    const unsigned int columns = font.max_char_or_byte2 - font.min_char_or_byte2 + 1;
    const XCharStruct& glyph =
        font.per_char[(row - font.min_byte1) * columns + column - font.min_char_or_byte2];
    const bool isThere = glyph.width != 0 || glyph.lbearing != 0 || glyph.rbearing != 0 ||
                         glyph.ascent != 0 || glyph.descent != 0;
    return isThere ? &glyph : nullptr;
}
