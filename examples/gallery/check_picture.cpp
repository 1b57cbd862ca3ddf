/// Checks a picture of the gallery: check_picture FILE WIDTH HEIGHT. Both halves must show
/// something, and not the same. A large picture must have what is written and drawn around the
/// terrain, in the right place and colours.
#include <png.h>

#include <cstdio>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

namespace {

constexpr int kInk = 0x212B38;
// Inner colours of the tables: what the left half shows and what the right half does.
constexpr int kTables[2][4] = {{0x8AB07D, 0xBDC98C, 0xE6D69E, 0xF2E0C2},
                               {0x80699E, 0xBD7894, 0xEB9980, 0xFAC78F}};
int failures = 0;

struct Picture {
    std::size_t width, height;
    std::vector<unsigned char> bytes;

    int colour(std::size_t column, std::size_t row) const {
        const unsigned char* const at = &bytes[3 * (row * width + column)];
        return at[0] << 16 | at[1] << 8 | at[2];
    }
};

struct Region {
    std::size_t left, top, width, height;
};

void expect(bool good, const char* what) {
    if (good) return;
    std::printf("FAILED: %s\n", what);
    ++failures;
}

bool isNear(int a, int b) {
    const auto apart = [&](int shift) { return std::abs((a >> shift & 255) - (b >> shift & 255)); };
    return apart(0) <= 4 && apart(8) <= 4 && apart(16) <= 4;
}

int count(const Picture& picture, const Region& region, int colour) {
    int found = 0;
    for (std::size_t y = region.top; y < region.top + region.height; ++y)
        for (std::size_t x = region.left; x < region.left + region.width; ++x)
            found += isNear(picture.colour(x, y), colour) ? 1 : 0;
    return found;
}

void checkHalves(const Picture& picture) {
    const std::size_t half = picture.width / 2;
    std::set<int> left;
    std::set<int> right;
    std::size_t equal = 0;
    for (std::size_t row = 0; row < picture.height; ++row) {
        for (std::size_t column = 0; column < half; ++column) {
            left.insert(picture.colour(column, row));
            right.insert(picture.colour(column + half, row));
            equal += picture.colour(column, row) == picture.colour(column + half, row) ? 1U : 0U;
        }
    }
    std::printf("%zux%zu, %zu colours left, %zu right, %zu of %zu pixels equal\n", picture.width,
                picture.height, left.size(), right.size(), equal, half * picture.height);
    expect(left.size() > 2000, "the left half shows something");
    expect(right.size() > 2000, "the right half shows something");
    expect(10 * equal < 9 * half * picture.height, "the halves differ");
}

void checkAnnotations(const Picture& picture) {
    const std::size_t half = picture.width / 2;
    for (std::size_t side = 0; side < 2; ++side) {
        const std::size_t left = side * half;
        expect(count(picture, {left, 0, 300, 40}, kInk) > 400, "a title");
        expect(count(picture, {left, 40, 300, 20}, kInk) > 300, "a caption");
        expect(count(picture, {left, 200, 150, 300}, kInk) > 60, "labels of an axis");
        expect(count(picture, {left + 100, 80, 500, 400}, kInk) > 900, "labels of summits");
        const Region legend = {left + half - 100, 10, 90, 160};
        expect(count(picture, legend, kInk) > 150, "labels of the legend");
        for (int i = 0; i < 4; ++i) {
            expect(count(picture, legend, kTables[side][i]) > 10, "its colours in the legend");
            expect(count(picture, legend, kTables[1 - side][i]) == 0, "no others in the legend");
        }
    }
    const std::size_t right = picture.width - 150;
    const std::size_t bottom = picture.height - 180;
    expect(count(picture, {right, picture.height - 30, 150, 30}, kInk) > 150, "the build record");
    std::set<int> plan;
    for (std::size_t y = bottom; y < bottom + 140; ++y)
        for (std::size_t x = right; x < right + 130; ++x)
            plan.insert(picture.colour(x, y));
    std::printf("%zu colours in the plan\n", plan.size());
    expect(plan.size() > 2000, "a plan");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, argv[1]) == 0)
        return std::printf("%s: %s\n", argv[1], image.message), 1;
    image.format = PNG_FORMAT_RGB;
    Picture picture = {image.width, image.height, {}};
    picture.bytes.resize(PNG_IMAGE_SIZE(image));
    if (png_image_finish_read(&image, nullptr, picture.bytes.data(), 0, nullptr) == 0)
        return std::printf("%s: %s\n", argv[1], image.message), 1;

    expect(std::to_string(image.width) == argv[2], "its width");
    expect(std::to_string(image.height) == argv[3], "its height");
    checkHalves(picture);
    if (picture.width >= 1400 && picture.height >= 640) checkAnnotations(picture);
    return failures == 0 ? 0 : 1;
}
