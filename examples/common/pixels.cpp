/// pixels FILE.png X,Y...: prints the size of a picture and the colours at these places, counted
/// from the upper left corner.
#include <png.h>

#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, argv[1]) == 0)
        return std::printf("%s: %s\n", argv[1], image.message), 1;
    image.format = PNG_FORMAT_RGB;
    std::vector<unsigned char> bytes(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr) == 0)
        return std::printf("%s: %s\n", argv[1], image.message), 1;
    std::printf("picture %ux%u\n", image.width, image.height);
    for (int i = 2; i < argc; ++i) {
        unsigned int x = 0;
        unsigned int y = 0;
        if (std::sscanf(argv[i], "%4u,%4u", &x, &y) != 2 || x >= image.width || y >= image.height)
            return std::printf("no pixel %s\n", argv[i]), 1;
        const unsigned char* const at = &bytes[3 * (std::size_t{y} * image.width + x)];
        std::printf("pixel %u,%u %02x%02x%02x\n", x, y, at[0], at[1], at[2]);
    }
    return 0;
}
