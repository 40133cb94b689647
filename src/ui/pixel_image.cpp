#include "ui/pixel_image.h"

#include "ui/pixel_lanes.h"

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

// Between which pixels of the source those of the target lie: the first of two, and how near to
// the second in 256ths, once for each 16 bits. As many as make whole fours, the last repeated.
struct Between {
    std::vector<int> first;
    std::vector<std::uint32_t> weight;
};

Between between(int from, int to) {
    Between places;
    for (std::int64_t i = 0; i < (to + 3) / 4 * 4; ++i) {
        // The middle of pixel i in 1/256 of a source pixel, counted from the first one's middle.
        const std::int64_t middle =
            ((2 * std::min<std::int64_t>(i, to - 1) + 1) * from * 256 / to - 256) / 2;
        const std::int64_t place = std::clamp<std::int64_t>(middle, 0, (from - 1) * 256LL);
        places.first.push_back(static_cast<int>(place >> 8));
        places.weight.push_back(static_cast<std::uint32_t>(place & 0xFF) * 0x10001U);
    }
    return places;
}

PixelImage interpolated(const PixelImage& image, int width, int height) {
    const Between columns = between(image.width, width), rows = between(image.height, height);
    // Both lines are longer than a row, so that fours need no end of their own, and the last pixel
    // has a neighbour, of which nothing is taken.
    const auto spare = [](int count) { return static_cast<std::size_t>(count) + 4; };
    std::vector<std::uint32_t> line(spare(image.width)), out(spare(width));
    PixelImage result;
    result.width = width;
    result.height = height;
    result.pixels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const auto row = [&](int number) {
            return image.pixels.data() + static_cast<std::ptrdiff_t>(number) * image.width;
        };
        const std::uint32_t* upper = row(rows.first[y]);
        const std::uint32_t* lower = row(std::min(rows.first[y] + 1, image.height - 1));
        const __m128i weight = _mm_set1_epi32(static_cast<int>(rows.weight[y]));
        int x = 0;
        for (; x + 4 <= image.width; x += 4) {
            storeFour(&line[static_cast<std::size_t>(x)],
                      mixedFour(loadFour(upper + x), loadFour(lower + x), weight));
        }
        if (const int rest = image.width - x; rest > 0) {
            std::uint32_t ends[2][4] = {};
            std::copy_n(upper + x, rest, ends[0]);
            std::copy_n(lower + x, rest, ends[1]);
            storeFour(&line[static_cast<std::size_t>(x)],
                      mixedFour(loadFour(ends[0]), loadFour(ends[1]), weight));
        }
        for (std::size_t i = 0; i < columns.first.size(); i += 4) {
            const int* first = &columns.first[i];
            const auto [left, right] =
                neighboursAt({line.data() + first[0], line.data() + first[1],
                              line.data() + first[2], line.data() + first[3]});
            storeFour(&out[i], mixedFour(left, right, loadFour(&columns.weight[i])));
        }
        result.pixels.insert(result.pixels.end(), out.begin(), out.begin() + width);
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
    PixelImage half = blankImage((image.width + 1) / 2, (image.height + 1) / 2);
    for (int y = 0; y < half.height; ++y) {
        const auto row = [&](int line) {
            return image.pixels.data() + static_cast<std::ptrdiff_t>(line) * image.width;
        };
        const std::uint32_t* upper = row(2 * y);
        const std::uint32_t* lower = row(std::min(2 * y + 1, image.height - 1));
        std::uint32_t* out = viewOf(half).row(y);
        int x = 0;
        for (; 2 * x + 8 <= image.width; x += 4) {
            storeFour(out + x, averagedFour(upper + 2 * x, lower + 2 * x));
        }
        if (x < half.width) {
            std::uint32_t ends[2][8], last[4];
            for (int i = 0; i < 8; ++i) {
                const int column = std::min(2 * x + i, image.width - 1);
                ends[0][i] = upper[column];
                ends[1][i] = lower[column];
            }
            storeFour(last, averagedFour(ends[0], ends[1]));
            std::copy_n(last, half.width - x, out + x);
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
