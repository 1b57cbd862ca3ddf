#pragma once

#include <string>
#include <vector>

/// Red, green and blue bytes, the lowest row first, as GL reads them.
struct Picture {
    Picture(int columns, int rows)
        : width(columns), height(rows), pixels(static_cast<std::size_t>(3 * columns * rows)) {}

    int width;
    int height;
    std::vector<unsigned char> pixels;
};

/// The mean of many frames. Each frame is drawn a fraction of a pixel beside the others, so the
/// mean has smooth edges, on drivers without multisampling too.
class Exposure {
public:
    Exposure(int width, int height) : mFrame(width, height), mSums(mFrame.pixels.size()) {}

    /// The fraction of a pixel by which to shift a frame, in [-0.5, 0.5). Numbers in a row are well
    /// spread; bases without a common factor give independent axes.
    static float shift(long number, long base);

    /// Adds what stands in the current GL context.
    void add();

    /// Puts the mean into the picture's columns from `x` on.
    void copyTo(Picture& picture, int x) const;

private:
    Picture mFrame;
    std::vector<unsigned int> mSums;
    unsigned int mFrames = 0;
};

/// Throws `std::runtime_error` when a picture could not be written there. Touches nothing.
void checkWritable(const std::string& path);

/// Writes a PNG file: all of it under its name, or a `std::runtime_error` and nothing.
void writePicture(const Picture& picture, const std::string& path);
