// Halves the pictures of the panel once and twice, for screens that never show them in full: a
// start then decodes a sixteenth of the pixels. Runs during the build.
//
// usage: reduce_pictures FOLDER PNG...      leaves FOLDER/NAME.1 and FOLDER/NAME.2
//
// The averages are the program's own, so that a reduced file shows the same pixels as one that is
// reduced after decoding. That holds for opaque pictures; others are refused.

#include "graphics/pixel_image.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <png.h>
#include <stdexcept>
#include <string>

namespace percussomatic {
namespace {

PixelImage readPng(const std::filesystem::path& path) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&png, path.string().c_str()) == 0) {
        throw std::runtime_error(path.string() + ": " + png.message);
    }
    png.format = PNG_FORMAT_BGRA;
    PixelImage image = blankImage(static_cast<int>(png.width), static_cast<int>(png.height));
    if (png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) == 0) {
        throw std::runtime_error(path.string() + ": " + png.message);
    }
    const auto opaque = [](std::uint32_t pixel) { return pixel >> 24 == 255; };
    if (!std::all_of(image.pixels.begin(), image.pixels.end(), opaque)) {
        throw std::runtime_error(path.string() + " is not opaque");
    }
    return image;
}

void writePng(const std::filesystem::path& path, const PixelImage& image) {
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(image.width);
    png.height = static_cast<png_uint_32>(image.height);
    png.format = PNG_FORMAT_BGRA;
    if (png_image_write_to_file(&png, path.string().c_str(), 0, image.pixels.data(), 0, nullptr) ==
        0) {
        throw std::runtime_error(path.string() + ": " + png.message);
    }
}

} // namespace
} // namespace percussomatic

int main(int count, char** arguments) {
    using namespace percussomatic;
    if (count < 3) {
        std::fprintf(stderr, "usage: reduce_pictures FOLDER PNG...\n");
        return 2;
    }
    try {
        const std::filesystem::path folder = arguments[1];
        for (int i = 2; i < count; ++i) {
            const std::filesystem::path source = arguments[i];
            PixelImage image = readPng(source);
            for (const char* halvings : {".1", ".2"}) {
                image = halved(image);
                writePng(folder / (source.filename().string() + halvings), image);
            }
        }
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
    return 0;
}
