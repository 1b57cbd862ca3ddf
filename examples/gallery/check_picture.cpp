/// Checks a picture of the gallery: check_picture FILE WIDTH HEIGHT. Both halves must show
/// something, and not the same.
#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, argv[1]) == 0)
        return std::printf("%s: %s\n", argv[1], image.message), 1;
    image.format = PNG_FORMAT_RGB;
    std::vector<unsigned char> bytes(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr) == 0)
        return std::printf("%s: %s\n", argv[1], image.message), 1;

    const auto colour = [&](std::size_t row, std::size_t column) {
        const unsigned char* const at = &bytes[3 * (row * image.width + column)];
        return at[0] << 16 | at[1] << 8 | at[2];
    };
    const std::size_t half = image.width / 2;
    std::set<int> left;
    std::set<int> right;
    std::size_t equal = 0;
    for (std::size_t row = 0; row < image.height; ++row) {
        for (std::size_t column = 0; column < half; ++column) {
            left.insert(colour(row, column));
            right.insert(colour(row, column + half));
            equal += colour(row, column) == colour(row, column + half) ? 1U : 0U;
        }
    }
    std::printf("%ux%u, %zu colours left, %zu right, %zu of %zu pixels equal\n", image.width,
                image.height, left.size(), right.size(), equal, half * image.height);
    const bool sized =
        std::to_string(image.width) == argv[2] && std::to_string(image.height) == argv[3];
    const bool shows = left.size() > 2000 && right.size() > 2000;
    return sized && shows && 10 * equal < 9 * half * image.height ? 0 : 1;
}
