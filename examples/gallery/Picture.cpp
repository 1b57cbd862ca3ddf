#include "Picture.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <stdexcept>

#include <fcntl.h>
#include <GL/gl.h>
#include <png.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

// Where the file really lies: behind symbolic links, so that a rename replaces it and not a link.
fs::path realPath(const std::string& path) {
    return fs::weakly_canonical(fs::absolute(path));
}

[[noreturn]] void fail(const std::string& path, const std::string& reason) {
    throw std::runtime_error(path + ": cannot be written: " + reason);
}

// Empty when the file was written and closed, else the reason why not.
std::string writeAndClose(const Picture& picture, std::FILE* file) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_RGB;
    const int bottomUp = -3 * picture.width;
    std::string reason;
    errno = 0;
    if (png_image_write_to_stdio(&image, file, 0, picture.pixels.data(), bottomUp, nullptr) == 0)
        reason = errno != 0 ? std::strerror(errno) : image.message;
    else if (std::fflush(file) != 0 || fsync(fileno(file)) != 0)
        reason = std::strerror(errno);
    if (std::fclose(file) != 0 && reason.empty()) reason = std::strerror(errno);
    return reason;
}

}  // namespace

float Exposure::shift(long number, long base) {
    float sum = 0;
    float weight = 1;
    for (; number > 0; number /= base) {
        weight /= static_cast<float>(base);
        sum += weight * static_cast<float>(number % base);
    }
    return sum - 0.5F;
}

void Exposure::add() {
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, mFrame.width, mFrame.height, GL_RGB, GL_UNSIGNED_BYTE, mFrame.pixels.data());
    std::transform(mSums.begin(), mSums.end(), mFrame.pixels.begin(), mSums.begin(), std::plus<>());
    ++mFrames;
}

void Exposure::copyTo(Picture& picture, int x) const {
    const std::ptrdiff_t rowSize = std::ptrdiff_t{3} * mFrame.width;
    for (std::ptrdiff_t row = 0; row < mFrame.height; ++row)
        std::transform(mSums.begin() + row * rowSize, mSums.begin() + (row + 1) * rowSize,
                       picture.pixels.begin() + 3 * (row * picture.width + x),
                       [&](unsigned int sum) { return static_cast<unsigned char>(sum / mFrames); });
}

void checkWritable(const std::string& path) {
    const fs::path file = realPath(path);
    const fs::file_status status = fs::status(file);
    if (fs::exists(status) && !fs::is_regular_file(status)) fail(path, "not a regular file");
    if (access(file.parent_path().c_str(), W_OK | X_OK) != 0) fail(path, std::strerror(errno));
}

void writePicture(const Picture& picture, const std::string& path) {
    const fs::path file = realPath(path);
    const std::string temporary = file.string() + "." + std::to_string(getpid()) + ".tmp";
    const int descriptor = open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) fail(path, std::strerror(errno));
    std::string reason = writeAndClose(picture, fdopen(descriptor, "wb"));
    if (reason.empty() && std::rename(temporary.c_str(), file.c_str()) != 0)
        reason = std::strerror(errno);
    if (reason.empty()) return;
    unlink(temporary.c_str());
    fail(path, reason);
}
