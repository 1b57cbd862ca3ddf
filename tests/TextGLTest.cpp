#include "support/RealGLX.h"

#include <kygl/kygl.h>
#include <kygl/KyGLText.h>

#include <cstring>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include <GL/glx.h>  // last: its macros break others

namespace {

using Pixels = std::vector<unsigned char>;
constexpr int kSide = 64;

struct Look {
    int alignX, alignY, x, y;
    float back, fore;  // alphas
};

Pixels picture() {
    Pixels pixels(std::size_t{3} * kSide * kSide);
    glReadPixels(0, 0, kSide, kSide, GL_RGB, GL_UNSIGNED_BYTE, pixels.data());
    glClearColor(0.2f, 0.3f, 0.4f, 0);
    glClear(GL_COLOR_BUFFER_BIT);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE);
    return pixels;
}

int inHalves(int align, int size) {
    return align < 0 ? 0 : align == 0 ? size : 2 * size;
}

// Each box or line in a single move from the raster position.
void place(const XFontStruct& font, const Look& look, const std::string& text, int height,
           bool boxes) {
    static const std::regex breaks("\n|\\\\n");
    const std::vector<std::string> lines(
        std::sregex_token_iterator(text.begin(), text.end(), breaks, -1), {});
    const int h = font.ascent + font.descent, step = h + (2 * h + 5) / 10;
    int y = look.y + (look.alignY == -1 ? 0 : font.descent + 1) - (boxes ? font.descent : 0) - h;
    glColor4f(boxes ? 0.25f : 1, 0.5f, 0.75f, boxes ? look.back : look.fore);
    for (const std::string& line : lines) {
        const auto bytes = static_cast<int>(line.size());
        const int width = XTextWidth(const_cast<XFontStruct*>(&font), line.c_str(), bytes);
        const int x = 2 * (look.x - (boxes ? 2 : 0)) - inHalves(look.alignX, width);
        glRasterPos3f(0.1f, -0.2f, 0.3f);
        glBitmap(0, 0, 0, 0, static_cast<float>(x) / 2,
                 static_cast<float>(2 * y + inHalves(-look.alignY, height)) / 2, nullptr);
        if (boxes) glBitmap(width + 4, h, 0, 0, 0, 0, Pixels(4096, 255).data());
        if (!boxes) glCallLists(bytes, GL_UNSIGNED_BYTE, line.c_str());
        y -= step;
    }
}

void drawByHand(const XFontStruct& font, const Look& look, const char* text, int height) {
    if (look.back > 0 && look.back < 1) {
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glEnable(GL_BLEND);
    }
    if (look.back > 0) place(font, look, text, height, true);
    if (look.fore > 0 && look.fore < 1) glEnable(GL_BLEND);
    if (look.fore > 0) place(font, look, text, height, false);
    glDisable(GL_BLEND);
}

// Whatever the settings, the library's picture is the one drawn by hand with lists of its own.
void compare(unsigned int context, const char* pattern, int size) {
    XFontStruct* const font = XLoadQueryFont(glXGetCurrentDisplay(), pattern);
    ASSERT_NE(font, nullptr);
    const GLuint lists = glGenLists(256);
    glXUseXFont(font->fid, 0, 256, static_cast<int>(lists));
    while (glGetError() != 0)
        continue;  // blank glyphs leave one in Mesa
    kyglSetContext(context);
    KyGLText::setFont(size, true, false, "helvetica");
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    picture();
    const Pixels empty = picture();
    const float alphas[] = {0, 0.5f, 1};
    for (int n = 0; n < 108; ++n) {
        const Look look = {n % 3 - 1, n / 3 % 4 - 2,      n % 7 - 3,
                           4 - n % 5, alphas[n / 12 % 3], alphas[n / 36]};
        KyGLText::setAlignment(look.alignX, look.alignY);
        KyGLText::setPixelOffset(look.x, look.y);
        KyGLText::setBackground(0.25f, 0.5f, 0.75f, look.back);
        KyGLText::setForeground(1, 0.5f, 0.75f, look.fore);
        for (const char* text : {"", "g", "Wide\ni\\ng|j", "jj\n\n.\n"}) {
            KyGLText::render(0.1f, -0.2f, 0.3f, text);
            const Pixels drawn = picture();
            glListBase(lists);
            int width = 0, height = 0;
            KyGLText::textExtent(text, width, height);
            drawByHand(*font, look, text, height);
            const auto first = static_cast<int>(std::strcspn(text, "\n"));  // the widest line
            ASSERT_EQ(width, XTextWidth(font, text, first)) << text;
            ASSERT_EQ(drawn, picture()) << n << ' ' << text;
            ASSERT_EQ(drawn == empty, look.back <= 0 && (look.fore <= 0 || *text == '\0'));
        }
    }
    EXPECT_EQ(glGetError(), 0U);
    glDeleteLists(lists, 256);
    XFreeFont(glXGetCurrentDisplay(), font);
}

}  // namespace

struct TextGLTest : RealGLXTest {
    ~TextGLTest() override { kyglClearAllContexts(); }
    // One that no test has used: settings live as long as the process.
    static unsigned int newId() {
        static unsigned int last = 0;
        return ++last;
    }
};

TEST_F(TextGLTest, eachOfTwoThreadsDrawsWhatOneWouldDrawByHand) {
    const RealGLX beside;
    gl->makeCurrent();
    std::thread other([&, id = newId()] {
        beside.makeCurrent();
        compare(id, "-*-helvetica-bold-r-normal-*-12-*-*-*-*-*-*-*", 12);
        beside.release();
    });
    compare(newId(), "-*-helvetica-bold-r-normal-*-8-*-*-*-*-*-*-*", 8);
    other.join();
}

// Scaled fonts, of sizes that the server has no bitmaps for, come without metrics of each glyph;
// those of Chinese without a row for single bytes.
TEST_F(TextGLTest, thePenEndsWhereXSaysWhateverAFontLacks) {
    kyglSetContext(newId());
    const auto pen = [] {
        float at[4];
        glGetFloatv(GL_CURRENT_RASTER_POSITION, at);
        return static_cast<int>(at[0]);
    };
    const std::tuple<const char*, const char*, int> fonts[] = {{"fixed", "medium", 13},
                                                               {"helvetica", "bold", 12},
                                                               {"song ti", "medium", 16},
                                                               {"song ti", "medium", 20},
                                                               {"terminal", "bold", 17}};
    for (const auto& [family, weight, size] : fonts) {
        const std::string name = std::string("-*-") + family + '-' + weight + "-r-normal-*-" +
                                 std::to_string(size) + "-*-*-*-*-*-*-*";
        XFontStruct* const font = XLoadQueryFont(glXGetCurrentDisplay(), name.c_str());
        ASSERT_NE(font, nullptr) << name;
        KyGLText::setFont(size, weight == std::string("bold"), false, family);
        EXPECT_EQ(glGetError(), 0U) << name;
        std::string text;
        for (unsigned int code = font->min_char_or_byte2; code <= font->max_char_or_byte2; ++code)
            text += static_cast<char>(code);
        KyGLText::render(0, 0, 0, text.c_str() + (text[0] == '\0'));
        EXPECT_EQ(pen(), kSide / 2) << name << ": the next line would begin elsewhere";
        for (const char& each : text) {
            glRasterPos3f(0, 0, 0);
            glCallLists(1, GL_UNSIGNED_BYTE, &each);
            EXPECT_EQ(pen() - kSide / 2, XTextWidth(font, &each, 1)) << name << ' ' << +each;
        }
        XFreeFont(glXGetCurrentDisplay(), font);
    }
}
