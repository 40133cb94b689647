// SPDX-License-Identifier: MIT
// Writes each of the given panel pictures at half and at quarter size. On a screen too small for
// the full-size panel, the program then decodes as little as a sixteenth of the pixels at start-up.
// Runs during the build.
//
// usage: reduce_pictures FOLDER PNG...      writes FOLDER/NAME.1 (half) and FOLDER/NAME.2 (quarter)
//
// Uses the program's own averaging, so that a reduced file has the same pixels as a picture that is
// reduced after decoding. This holds for opaque pictures only; others are rejected.

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

int main(int argc, char** argv) {
    using namespace percussomatic;
    if (argc < 3) {
        std::fprintf(stderr, "usage: reduce_pictures FOLDER PNG...\n");
        return 2;
    }
    try {
        const std::filesystem::path folder = argv[1];
        for (int i = 2; i < argc; ++i) {
            const std::filesystem::path source = argv[i];
            PixelImage image = readPng(source);
            for (const char* suffix : {".1", ".2"}) {
                image = halved(image);
                writePng(folder / (source.filename().string() + suffix), image);
            }
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return 0;
}
