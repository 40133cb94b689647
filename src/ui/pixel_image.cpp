#include "ui/pixel_image.h"

#include <algorithm>
#include <cstddef>

namespace percussomatic {

void premultiply(PixelImage& image) noexcept {
    for (std::uint32_t& pixel : image.pixels) {
        const std::uint32_t alpha = pixel >> 24;
        if (alpha == 255) {
            continue;
        }
        const auto scaled = [&](int shift) {
            return ((((pixel >> shift) & 0xFF) * alpha + 127) / 255) << shift;
        };
        pixel = (alpha << 24) | scaled(16) | scaled(8) | scaled(0);
    }
}

PixelImage halved(const PixelImage& image) {
    PixelImage half{(image.width + 1) / 2, (image.height + 1) / 2, {}};
    half.pixels.reserve(static_cast<std::size_t>(half.width) *
                        static_cast<std::size_t>(half.height));
    for (int y = 0; y < half.height; ++y) {
        const auto row = [&](int line) {
            return image.pixels.data() + static_cast<std::ptrdiff_t>(line) * image.width;
        };
        const std::uint32_t* upper = row(2 * y);
        const std::uint32_t* lower = row(std::min(2 * y + 1, image.height - 1));
        for (int x = 0; x < half.width; ++x) {
            const int left = 2 * x, right = std::min(2 * x + 1, image.width - 1);
            // Two channels at a time: sums of four bytes and the rounding need ten bits of sixteen.
            constexpr std::uint32_t kEven = 0x00FF00FF, kRounding = 0x00020002;
            const std::uint32_t four[] = {upper[left], upper[right], lower[left], lower[right]};
            std::uint32_t even = kRounding, odd = kRounding;
            for (const std::uint32_t pixel : four) {
                even += pixel & kEven;
                odd += (pixel >> 8) & kEven;
            }
            half.pixels.push_back(((even >> 2) & kEven) | (((odd >> 2) & kEven) << 8));
        }
    }
    return half;
}

int halvings(int width, int height, double largestScale) noexcept {
    int count = 0;
    int w = width, h = height;
    while (w > 1 && h > 1) {
        w = (w + 1) / 2;
        h = (h + 1) / 2;
        if (w < width * largestScale || h < height * largestScale) {
            break;
        }
        ++count;
    }
    return count;
}

} // namespace percussomatic
