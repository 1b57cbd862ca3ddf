/// Measures text without any GL: no context, no window, only a connection to the X server, whose
/// fonts they are.
///
///     text_extents [FAMILY]
#include <kygl/KyGLText.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include <X11/Xlib.h>

namespace {

constexpr int kSizes[] = {12, 18, 24};
const char* const kTexts[] = {"Frozen Head", "Frozen Head\n1,008 m", ""};

// Breaks as the two characters that a line may be broken with as well.
std::string printable(std::string text) {
    const std::size_t at = text.find('\n');
    return at == std::string::npos ? text : text.replace(at, 1, "\\n");
}

void printSizes(const char* family) {
    int sizes[64];
    const int count = KyGLText::availablePointSizes(sizes, 64, family, true, false);
    if (count == 0) throw std::runtime_error(std::string("no X font of the family ") + family);
    std::printf("bold %s in pixels:", family);
    for (int i = 0; i < count; ++i)
        std::printf(" %d", sizes[i]);
    std::puts("");
}

void printExtents(int size, const char* family) {
    KyGLText::setFont(size, true, false, family);
    for (const char* const text : kTexts) {
        int width = 0;
        int height = 0;
        const int lines = KyGLText::textExtent(text, width, height);
        std::printf("%4d %5d %5d %6d  \"%s\"\n", size, lines, width, height,
                    printable(text).c_str());
    }
}

}  // namespace

int main(int argc, char** argv) try {
    const char* const family = argc > 1 ? argv[1] : "helvetica";
    const std::unique_ptr<Display, decltype(&XCloseDisplay)> display(XOpenDisplay(nullptr),
                                                                     XCloseDisplay);
    if (display == nullptr) throw std::runtime_error("no X display");
    // Ahead of all else: the first use of text loads a font, and without a GLX context there is no
    // other display to ask. Nor are there display lists then; a program that has a context, but
    // wants to measure only, sets TWILAN_KYGLTEXT_NOGL in its environment.
    KyGLText::setDisplay(display.get());
    printSizes(family);
    std::puts("size lines width height  text");
    for (const int size : kSizes)
        printExtents(size, family);
    KyGLText::setDisplay(nullptr);  // it closes now
    return 0;
} catch (const std::exception& e) {
    std::fprintf(stderr, "text_extents: %s\n", e.what());
    return 1;
}
