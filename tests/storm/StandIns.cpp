/// The X server, GLX and Qt of the storm: they never fail, and never run out of memory.
#include "../support/Allocations.h"
#include "../support/RecordedGL.h"

#include <kylib/KyEnvironment.h>

#include <cstdio>
#include <cstring>

#include <GL/glx.h>

namespace {

// Codes 32 to 127: the blank has no ink, the last two are missing and count as the blank.
XFontStruct* loadFont(int pixels) {
    static XCharStruct glyphs[96];
    static XFontStruct fonts[64];
    XFontStruct& font = fonts[pixels % 64];
    for (int i = 1; i < 94; ++i)
        glyphs[i] = {0, 5, 6, 8, 2, 0};
    glyphs[0] = {0, 0, 6, 0, 0, 0};
    font.min_char_or_byte2 = font.default_char = 32;
    font.max_char_or_byte2 = 127;
    font.per_char = glyphs;
    font.ascent = pixels;
    font.descent = 2;
    return &font;
}

}  // namespace

extern "C" {
XFontStruct* XLoadQueryFont(Display*, const char* name) {
    int pixels = 0;
    const char* const field = std::strstr(name, "normal-*-");
    return field != nullptr && std::sscanf(field, "normal-*-%d", &pixels) == 1 ? loadFont(pixels)
                                                                               : nullptr;
}
int XTextWidth(XFontStruct* font, const char*, int length) {
    return length * font->ascent;
}
void glXUseXFont(Font, int, int, int) {}
GLXContext glXGetCurrentContext() {
    return reinterpret_cast<GLXContext>(static_cast<std::uintptr_t>(RecordedGL::current));
}
GLXContextID glXGetContextIDEXT(GLXContext context) {
    return reinterpret_cast<std::uintptr_t>(context);
}

// A failed link writes a line: thousands of them say nothing.
int puts(const char* text) {
    return std::strncmp(text, "internal/", 9) == 0 ? 0 : std::printf("%s\n", text);
}
}

bool KyEnvironment::exists(const QString&, const bool&) {
    return false;
}
bool KyEnvironment::getBool(const QString&, const bool&, const bool&) {
    return false;
}
