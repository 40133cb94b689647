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

std::uint32_t premultiplied(std::uint32_t pixel) noexcept {
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 255) {
        return pixel;
    }
    const auto weighted = [&](int shift) {
        return ((((pixel >> shift) & 0xFF) * alpha + 127) / 255) << shift;
    };
    return (alpha << 24) | weighted(16) | weighted(8) | weighted(0);
}

// Source pixels over those of a row, four at a time; fours(i) are the source's from i on.
template <typename Fours>
void blendRow(std::uint32_t* row, std::size_t count, Fours fours) {
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        storeFour(row + i, overFour(fours(i), loadFour(row + i)));
    }
    if (i < count) {
        std::uint32_t rest[4] = {};
        std::copy_n(row + i, count - i, rest);
        storeFour(rest, overFour(fours(i), loadFour(rest)));
        std::copy_n(rest, count - i, row + i);
    }
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

// The picture at another size, at least half its own, with its corner at (left, top).
void interpolate(const PixelImage& image, const PixelRect& shown, const PixelView& target) {
    const PixelRect seen = intersected(shown, {0, 0, target.width, target.height});
    const Between columns = between(image.width, shown.width());
    const Between rows = between(image.height, shown.height());
    // Both lines are longer than a row, so that fours need no end of their own, and the last pixel
    // has a neighbour, of which nothing is taken.
    const auto spare = [](int count) { return static_cast<std::size_t>(count) + 4; };
    std::vector<std::uint32_t> line(spare(image.width)), out(spare(shown.width()));
    for (int y = seen.top; y < seen.bottom; ++y) {
        const auto place = static_cast<std::size_t>(y - shown.top);
        const auto row = [&](int number) {
            return image.pixels.data() + static_cast<std::ptrdiff_t>(number) * image.width;
        };
        const std::uint32_t* upper = row(rows.first[place]);
        const std::uint32_t* lower = row(std::min(rows.first[place] + 1, image.height - 1));
        const __m128i weight = _mm_set1_epi32(static_cast<int>(rows.weight[place]));
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
        std::copy_n(out.data() + (seen.left - shown.left), seen.width(), target.row(y) + seen.left);
    }
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
                blendRow(to, count, [&](std::size_t i) {
                    std::uint32_t last[4] = {};
                    if (count - i >= 4) {
                        return loadFour(from + i);
                    }
                    std::copy_n(from + i, count - i, last);
                    return loadFour(last);
                });
            });
}

void fillPixels(const PixelRect& rect, std::uint32_t argb, const PixelView& target) noexcept {
    const FourPixels four = _mm_set1_epi32(static_cast<int>(premultiplied(argb)));
    const PixelRect seen = intersected(rect, {0, 0, target.width, target.height});
    for (int y = seen.top; y < seen.bottom; ++y) {
        std::uint32_t* row = target.row(y) + seen.left;
        if (argb >> 24 == 0xFF) {
            std::fill_n(row, seen.width(), argb);
        } else {
            blendRow(row, static_cast<std::size_t>(seen.width()),
                     [&](std::size_t) { return four; });
        }
    }
}

void premultiply(PixelImage& image) noexcept {
    for (std::uint32_t& pixel : image.pixels) {
        pixel = premultiplied(pixel);
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

void copyScaled(const PixelImage& image, const PixelRect& shown, const PixelView& target) {
    const PixelImage* source = &image;
    PixelImage half;
    while (source->width >= 2 * shown.width() && source->height >= 2 * shown.height()) {
        half = halved(*source);
        source = &half;
    }
    interpolate(*source, shown, target);
}

PixelImage scaled(const PixelImage& image, int width, int height) {
    PixelImage result = blankImage(width, height);
    copyScaled(image, {0, 0, width, height}, viewOf(result));
    return result;
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
