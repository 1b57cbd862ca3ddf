#pragma once

#include <string>
#include <vector>

/// What was drawn, for a PNG file.
class Picture {
public:
    Picture(int width, int height);

    /// Copies the frame of the current GL context, before its buffers are swapped, into the columns
    /// from `x` on. Several threads may fill columns of their own at once.
    void grab(int x, int width);

    /// Throws `std::runtime_error`.
    void writePng(const std::string& file) const;

private:
    int mWidth;
    int mHeight;
    std::vector<unsigned char>
        mPixels;  ///< red, green, blue; the lowest row first, as the GL reads
};
