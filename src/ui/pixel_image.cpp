#include "ui/pixel_image.h"

#include <algorithm>

namespace percussomatic {

namespace {

// One row of a picture and the pixels it comes over.
template <typename PutRow>
void eachRow(const PixelImage& picture, int left, int top, const PixelView& target, PutRow put) {
    const int firstX = std::max(0, -left), endX = std::min(picture.width, target.width - left);
    const int firstY = std::max(0, -top), endY = std::min(picture.height, target.height - top);
    for (int y = firstY; y < endY && firstX < endX; ++y) {
        const std::uint32_t* from =
            picture.pixels.data() + static_cast<std::ptrdiff_t>(y) * picture.width + firstX;
        put(from, target.row(top + y) + left + firstX, static_cast<std::size_t>(endX - firstX));
    }
}

// Premultiplied source over destination, rounded.
std::uint32_t blended(std::uint32_t source, std::uint32_t destination) noexcept {
    const std::uint32_t through = 255 - (source >> 24);
    const auto channel = [&](int shift) {
        return ((((destination >> shift) & 0xFF) * through + 127) / 255) << shift;
    };
    return source + (channel(24) | channel(16) | channel(8) | channel(0));
}

// Two channels at a time, a and b weighted by 256 - weight and weight: 16 bits hold the products.
std::uint32_t mixed(std::uint32_t a, std::uint32_t b, std::uint32_t weight) noexcept {
    constexpr std::uint32_t kEven = 0x00FF00FF, kRounding = 0x00800080;
    const std::uint32_t even = (a & kEven) * (256 - weight) + (b & kEven) * weight + kRounding;
    const std::uint32_t odd =
        ((a >> 8) & kEven) * (256 - weight) + ((b >> 8) & kEven) * weight + kRounding;
    return ((even >> 8) & kEven) | (odd & ~kEven);
}

// Between which two pixels of the source one of the target lies, and how near to the second.
struct Between {
    int first, second;
    std::uint32_t weight; // of 256
};

std::vector<Between> betweens(int from, int to) {
    std::vector<Between> all;
    all.reserve(static_cast<std::size_t>(to));
    for (std::int64_t i = 0; i < to; ++i) {
        // The middle of pixel i in 1/256 of a source pixel, counted from the first one's middle.
        const std::int64_t middle = ((2 * i + 1) * from * 256 / to - 256) / 2;
        const std::int64_t place = std::clamp<std::int64_t>(middle, 0, (from - 1) * 256LL);
        const int first = static_cast<int>(place >> 8);
        all.push_back(
            {first, std::min(first + 1, from - 1), static_cast<std::uint32_t>(place & 0xFF)});
    }
    return all;
}

PixelImage interpolated(const PixelImage& image, int width, int height) {
    PixelImage result = blankImage(width, height);
    const std::vector<Between> columns = betweens(image.width, width);
    const std::vector<Between> rows = betweens(image.height, height);
    std::vector<std::uint32_t> line(static_cast<std::size_t>(image.width));
    std::uint32_t* out = result.pixels.data();
    const auto source = [&](int y) {
        return image.pixels.data() + static_cast<std::ptrdiff_t>(y) * image.width;
    };
    for (const Between& row : rows) {
        const std::uint32_t weight = row.weight;
        std::transform(source(row.first), source(row.first) + image.width, source(row.second),
                       line.begin(), [weight](std::uint32_t upper, std::uint32_t lower) {
                           return mixed(upper, lower, weight);
                       });
        for (const Between& column : columns) {
            *out++ = mixed(line[static_cast<std::size_t>(column.first)],
                           line[static_cast<std::size_t>(column.second)], column.weight);
        }
    }
    return result;
}

} // namespace

PixelImage blankImage(int width, int height) {
    if (width <= 0 || height <= 0) {
        return {};
    }
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    return {width, height, std::vector<std::uint32_t>(count)};
}

PixelView viewOf(PixelImage& image) noexcept {
    return {image.pixels.data(), image.width, image.height, image.width};
}

void copyPixels(const PixelImage& picture, int left, int top, const PixelView& target) noexcept {
    eachRow(picture, left, top, target,
            [](const std::uint32_t* from, std::uint32_t* to, std::size_t count) {
                std::copy_n(from, count, to);
            });
}

void blendPixels(const PixelImage& picture, int left, int top, const PixelView& target) noexcept {
    eachRow(picture, left, top, target,
            [](const std::uint32_t* from, std::uint32_t* to, std::size_t count) {
                std::transform(from, from + count, to, to, blended);
            });
}

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

PixelImage scaled(const PixelImage& image, int width, int height) {
    const PixelImage* source = &image;
    PixelImage half;
    while (source->width >= 2 * width && source->height >= 2 * height) {
        half = halved(*source);
        source = &half;
    }
    return interpolated(*source, width, height);
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
