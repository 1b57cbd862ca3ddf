#pragma once

#include <string>
#include <vector>

/// How a text looks.
struct Style {
    int size;  ///< in pixels
    bool bold, italic;
    const char* family;
    float box;  ///< opacity of the paper behind it
};

/// A rectangle of the picture, in pixels from its lower left corner.
struct Box {
    float left, bottom, right, top;
};

/// The size of a text in pixels.
struct Extent {
    float width, height;
};

/// Makes a style current in this context. Throws `std::runtime_error` where the X server lacks the
/// font.
void useStyle(const Style& style);

/// The size of a text in the current style.
Extent extentOf(const std::string& text);

/// Where and how a text stands: see `KyGLText::setAlignment` and `setPixelOffset`.
struct Anchor {
    float x, y, z;  ///< in the current projection
    int horizontal, vertical;
    int right = 0, up = 0;  ///< shift in pixels
};

/// Draws a text in the current style.
void drawText(const Anchor& anchor, const std::string& text);

/// The room of a picture. A text that would be cut off or touch another is left out, so what
/// matters most is drawn first.
class Labels {
public:
    Labels(int width, int height) : mWidth(width), mHeight(height) {}

    /// Draws a text if there is room. @return whether there was
    bool draw(const Anchor& anchor, const std::string& text);

    /// Takes room that nothing else may touch. @return false, and takes none, where it is not free
    bool take(const Box& box);

private:
    int mWidth, mHeight;
    std::vector<Box> mTaken;
};

/// Prints the pixel sizes that the X server offers of a font family, for each weight and slant.
/// Throws `std::runtime_error` when there are none.
void listFonts(const std::string& family);
