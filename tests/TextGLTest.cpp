#include "support/Messages.h"
#include "support/RealGLX.h"

#include <kygl/kygl.h>
#include <kygl/KyGLText.h>

#include <string>
#include <utility>
#include <vector>

#include <GL/glx.h>  // last: its macros break others

constexpr int kSide = 64;

struct TextGLTest : RealGLXTest {
    ~TextGLTest() override { kyglClearAllContexts(); }
};

TEST_F(TextGLTest, boxesAreAsLargeAsTheirLinesWhichTheyCarry) {
    kyglSetContext(1);
    KyGLText::setAlignment(0, 0);
    KyGLText::setForeground(1, 0, 0, 1);
    KyGLText::setBackground(0, 0, 1, 0.5f);
    int width = 0, all = 0, height = 0;
    for (const char* line : {"Wide", "g|j", "i"}) {
        KyGLText::textExtent(line, width, height);
        all += (width + 4) * height;
    }
    glClear(GL_COLOR_BUFFER_BIT);
    KyGLText::render(0, 0, 0, "Wide\ng|j\\ni");
    std::vector<unsigned char> pixels(std::size_t{4} * kSide * kSide);
    glReadPixels(0, 0, kSide, kSide, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    int ink = 0, boxes = 0;
    for (std::size_t at = 0; at < pixels.size(); at += 4) {
        if (pixels[at] == 255) ++ink;
        if (pixels[at + 2] == 128 || pixels[at + 2] == 127) ++boxes;
    }
    EXPECT_EQ(boxes + ink, all);
    EXPECT_GT(ink, 0);
}

// Scaled fonts, of sizes that the server has no bitmaps for, come without metrics of each glyph;
// those of Chinese without a row for single bytes.
TEST_F(TextGLTest, thePenEndsWhereXSaysWhateverAFontLacks) {
    kyglSetContext(2);
    const auto pen = [] {
        float at[4];
        glGetFloatv(GL_CURRENT_RASTER_POSITION, at);
        return static_cast<int>(at[0]);
    };
    const std::pair<const char*, int> fonts[] = {
        {"fixed", 13}, {"helvetica", 12}, {"song ti", 16}, {"song ti", 20}, {"terminal", 17}};
    for (const auto& [family, size] : fonts) {
        const std::string name = std::string("-*-") + family + "-medium-r-normal-*-" +
                                 std::to_string(size) + "-*-*-*-*-*-*-*";
        XFontStruct* const font = XLoadQueryFont(glXGetCurrentDisplay(), name.c_str());
        ASSERT_NE(font, nullptr) << name;
        KyGLText::setFont(size, false, false, family);
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

TEST_F(TextGLTest, aFontOfAnotherFamilyIsReportedByTheNameThatTheServerGivesIt) {
    kyglSetContext(3);
    Messages messages(KyDiagnostics::Text);
    KyGLText::setFont(13, false, false, "no such");
    const std::string last = messages.take().back();
    EXPECT_EQ(last.find("context 3: warning: "), 0U) << last;
    EXPECT_NE(last.find("'no such' (13 pixels)"), std::string::npos) << last;
    EXPECT_NE(last.find("--13-"), std::string::npos) << last;
    KyGLText::render(0, 0, 0, "caf\xe9");
    EXPECT_EQ(messages.take(), std::vector<std::string>());
}
