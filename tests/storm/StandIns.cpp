/// The X server, GLX and Qt of the storm: they never fail, and never run out of memory.
#include "../support/Allocations.h"
#include "../support/RecordedGL.h"

#include <kylib/KyEnvironment.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <GL/glx.h>

extern "C" {
// Three codes, none with ink, so that each gets a list of the library's own.
XFontStruct* XLoadQueryFont(Display*, const char* name) {
    static XFontStruct fonts[64];
    const int pixels = std::atoi(std::strstr(name, "normal-*-") + 9);
    XFontStruct& font = fonts[pixels % 64];
    font.min_char_or_byte2 = 32;
    font.max_char_or_byte2 = 34;
    font.min_bounds.width = 6;
    font.ascent = pixels;
    return &font;
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
int puts(const char* s) {
    return std::strncmp(s, "internal/", 9) == 0 ? 0 : std::printf("%s\n", s);
}
}

bool KyEnvironment::exists(const QString&, const bool&) {
    return false;
}
bool KyEnvironment::getBool(const QString&, const bool&, const bool&) {
    return false;
}
