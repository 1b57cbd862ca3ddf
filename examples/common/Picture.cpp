#include "Picture.h"

#include <stdexcept>

#include <GL/gl.h>
#include <png.h>

Picture::Picture(int width, int height)
    : mWidth(width), mHeight(height), mPixels(static_cast<std::size_t>(3 * width * height)) {}

void Picture::grab(int x, int width) {
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, mWidth);
    glPixelStorei(GL_PACK_SKIP_PIXELS, x);
    glReadPixels(0, 0, width, mHeight, GL_RGB, GL_UNSIGNED_BYTE, mPixels.data());
}

void Picture::writePng(const std::string& file) const {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(mWidth);
    image.height = static_cast<png_uint_32>(mHeight);
    image.format = PNG_FORMAT_RGB;
    const int bottomUp = -3 * mWidth;
    if (png_image_write_to_file(&image, file.c_str(), 0, mPixels.data(), bottomUp, nullptr) == 0)
        throw std::runtime_error(file + ": " + image.message);
}
