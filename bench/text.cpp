// Text: a line drawn and measured, beside the same calls of GL and Xlib written by hand.

#include "support.h"

#include <kygl/kygl.h>
#include <kygl/KyGLText.h>
#include <sogl/SoGLContext.h>
#include <sogl/SoGLEW.h>

#include <cstring>
#include <memory>
#include <stdexcept>

#include <GL/glx.h>
#include <X11/Xlib.h>

namespace {

constexpr const char* kLine = "Forty characters of text drawn as a line";
constexpr const char* kFont = "-*-helvetica-bold-r-normal-*-12-*-*-*-*-*-*-*";
constexpr float kColour[4] = {1, 1, 1, 1};
constexpr float kBox[4] = {0, 0, 0, 0.5F};

/// Entry points that do nothing over a context that is there, for fonts ask for one.
struct SilentContext {
    RealGL context;
    NoOpGL gl;
};

template <typename GL>
struct Drawn {
    GL gl;

    explicit Drawn(bool boxed) {
        kyglSetContext(1);
        KyGLText::setFont(12, true, false, "helvetica");
        KyGLText::setBackground(0, 0, 0, boxed ? kBox[3] : 0);
        int width = 0;
        int height = 0;
        if (KyGLText::textExtent(kLine, width, height) != 1)
            throw std::runtime_error("the X server lacks the font");
    }
    ~Drawn() {
        KyGLText::cleanUp();
        kyglClearAllContexts();
    }

    void operator()() const { KyGLText::render(0, 0, 0, kLine); }
};

XFontStruct* loadFont() {
    XFontStruct* const font = XLoadQueryFont(glXGetCurrentDisplay(), kFont);
    if (font == nullptr) throw std::runtime_error("the X server lacks the font");
    return font;
}

template <typename GL>
struct ByHand {
    GL gl;
    bool boxed;
    XFontStruct* font = loadFont();
    GLuint lists = 0;
    std::unique_ptr<unsigned char[]> mask{new unsigned char[8192]};

    explicit ByHand(bool withBox) : boxed(withBox) {
        const unsigned int end = font->max_char_or_byte2 + 1;
        const unsigned int first = font->min_char_or_byte2;
        lists = glGenLists(static_cast<GLsizei>(end));
        glXUseXFont(font->fid, static_cast<int>(first), static_cast<int>(end - first),
                    static_cast<int>(lists + first));
        std::memset(mask.get(), 0xFF, 8192);
        while (glGetError() != GL_NO_ERROR) {
        }
    }

    void operator()() const {
        const auto length = static_cast<int>(std::strlen(kLine));
        const int width = XTextWidth(font, kLine, length);
        const int height = font->ascent + font->descent;
        const double fifth = height * 0.2 + 0.5;
        const auto gap = static_cast<float>(static_cast<int>(fifth));
        const auto top = static_cast<float>(height);
        glListBase(lists);
        if (boxed) {
            glPushAttrib(GL_ENABLE_BIT);
            glEnable(GL_BLEND);
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
            if (SoGLContext::glewGetCurrentContextIV(false)->VERSION_1_4)
                glBlendEquation(GL_FUNC_ADD);
            glColor4fv(kBox);
            glRasterPos3f(0, 0, 0);
            glBitmap(0, 0, 0, 0, 0, top - static_cast<float>(font->descent), nullptr);
            glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
            glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
            glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
            glBitmap(0, 0, 0, 0, -2, -top, nullptr);
            glBitmap(width + 4, height, 0, 0, 2, -gap, mask.get());
        }
        glColor4fv(kColour);
        glRasterPos3f(0, 0, 0);
        glBitmap(0, 0, 0, 0, 0, top, nullptr);
        glBitmap(0, 0, 0, 0, 0, -top, nullptr);
        glCallLists(length, GL_UNSIGNED_BYTE, kLine);
        glBitmap(0, 0, 0, 0, static_cast<float>(-width), -gap, nullptr);
        if (boxed) glPopAttrib();
    }
};

template <typename GL>
void addRender(const std::string& name, double limit) {
    for (const bool boxed : {false, true}) {
        const std::string side = name + (boxed ? "Boxed" : "");
        addSide(side + "/library", [=] { return Drawn<GL>(boxed); });
        addSide(side + "/raw", [=] { return ByHand<GL>(boxed); });
        addRatio({side + "/library", side + "/raw", limit});
    }
}

struct Measured {
    SilentContext gl;
    std::string text;

    Measured(unsigned int contexts, std::size_t length) : text(length, 'e') {
        for (unsigned int id = 0; id < contexts; ++id)
            kyglSetContext(id);
        KyGLText::setFont(12, true, false, "helvetica");
    }
    ~Measured() {
        KyGLText::cleanUp();
        kyglClearAllContexts();
    }

    void operator()() const {
        int width = 0;
        int height = 0;
        benchmark::DoNotOptimize(KyGLText::textExtent(text.c_str(), width, height));
        benchmark::DoNotOptimize(width);
    }
};

struct XMeasured {
    RealGL gl;
    XFontStruct* font = loadFont();
    std::string text;

    explicit XMeasured(std::size_t length) : text(length, 'e') {}
    void operator()() const {
        benchmark::DoNotOptimize(XTextWidth(font, text.c_str(), static_cast<int>(text.size())));
    }
};

}  // namespace

void addText() {
    addRender<SilentContext>("render", 0);
    addRender<RealGL>("renderDriver", 1.05);
    addSide("extent40/xlib", [] { return XMeasured(40); });
    addSide("extent1M/xlib", [] { return XMeasured(1000000); });
    for (const unsigned int contexts : {8U, 1000U}) {
        const std::string suffix = "/contexts" + std::to_string(contexts);
        addSide("extent40" + suffix, [=] { return Measured(contexts, 40); });
        addRatio({"extent40" + suffix, "extent40/xlib", 100, true});
        addSide("extent1M" + suffix, [=] { return Measured(contexts, 1000000); });
        addRatio({"extent1M" + suffix, "extent1M/xlib", 1.2});
    }
}
