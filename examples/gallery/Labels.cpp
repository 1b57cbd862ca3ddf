#include "Labels.h"

#include "GlxSurface.h"

#include <kygl/KyGLText.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include <GL/gl.h>
#include <X11/Xlib.h>

namespace {

constexpr float kInk[] = {0.13F, 0.17F, 0.22F};
constexpr float kPaper[] = {0.97F, 0.97F, 0.96F};

// Where a text of this size lies when it is anchored at a pixel. `KyGLText` does not tell how far
// its font reaches below the baseline; a quarter of the height is enough.
Box boxOf(const Anchor& anchor, float x, float y, const Extent& extent) {
    float left = x;
    if (anchor.horizontal >= 0) left -= anchor.horizontal == 0 ? extent.width / 2 : extent.width;
    float bottom = y;
    if (anchor.vertical == -1) bottom -= extent.height / 4;
    if (anchor.vertical >= 0) bottom -= anchor.vertical == 0 ? extent.height / 2 : extent.height;
    constexpr float kMargin = 2;  // as wide as the paper beside a line
    return {left - kMargin, bottom - kMargin, left + extent.width + kMargin,
            bottom + extent.height + kMargin};
}

}  // namespace

void useStyle(const Style& style) {
    KyGLText::setFont(style.size, style.bold, style.italic, style.family);
    KyGLText::setForeground(kInk[0], kInk[1], kInk[2], 1);
    KyGLText::setBackground(kPaper[0], kPaper[1], kPaper[2], style.box);
    if (extentOf("").height > 0) return;
    throw std::runtime_error("the X server has no font of " + std::to_string(style.size) +
                             " pixels like '" + style.family +
                             "'; the packages xfonts-75dpi and xfonts-100dpi bring some");
}

Extent extentOf(const std::string& text) {
    int width = 0;
    int height = 0;
    KyGLText::textExtent(text.c_str(), width, height);
    return {static_cast<float>(width), static_cast<float>(height)};
}

void drawText(const Anchor& anchor, const std::string& text) {
    KyGLText::setAlignment(anchor.horizontal, anchor.vertical);
    KyGLText::setPixelOffset(anchor.right, anchor.up);
    KyGLText::render(anchor.x, anchor.y, anchor.z, text.c_str());
}

bool Labels::draw(const Anchor& anchor, const std::string& text) {
    // The raster position is where the text will stand, and the GL tells whether that is in view.
    glRasterPos3f(anchor.x, anchor.y, anchor.z);
    GLboolean inView = GL_FALSE;
    glGetBooleanv(GL_CURRENT_RASTER_POSITION_VALID, &inView);
    if (inView == GL_FALSE) return false;
    float at[4];
    glGetFloatv(GL_CURRENT_RASTER_POSITION, at);
    Box box = boxOf(anchor, at[0] + static_cast<float>(anchor.right),
                    at[1] + static_cast<float>(anchor.up), extentOf(text));
    // What a text stands above has to be seen as well.
    if (anchor.right == 0 && anchor.up > 0) box.bottom = std::min(box.bottom, at[1] - 3);
    if (!take(box)) return false;
    drawText(anchor, text);
    return true;
}

bool Labels::take(const Box& box) {
    const bool inside = box.left >= 0 && box.bottom >= 0 &&
                        box.right <= static_cast<float>(mWidth) &&
                        box.top <= static_cast<float>(mHeight);
    const bool isFree = std::none_of(mTaken.begin(), mTaken.end(), [&](const Box& taken) {
        return box.left < taken.right && taken.left < box.right && box.bottom < taken.top &&
               taken.bottom < box.top;
    });
    if (inside && isFree) mTaken.push_back(box);
    return inside && isFree;
}

void listFonts(const std::string& family) {
    const std::unique_ptr<Display, int (*)(Display*)> display(openDisplay(), XCloseDisplay);
    KyGLText::setDisplay(display.get());
    bool any = false;
    for (const bool bold : {false, true}) {
        for (const bool italic : {false, true}) {
            int sizes[64];
            const int count =
                KyGLText::availablePointSizes(sizes, 64, family.c_str(), bold, italic);
            if (count == 0) continue;
            any = true;
            std::printf("%-7s %-7s", bold ? "bold" : "medium", italic ? "italic" : "upright");
            for (int i = 0; i < count; ++i)
                std::printf(" %d", sizes[i]);
            std::printf("\n");
        }
    }
    KyGLText::setDisplay(nullptr);
    if (!any)
        throw std::runtime_error("the X server has no bitmap font of family '" + family + "'");
}
