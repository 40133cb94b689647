#include "graphics/pixel_image.h"

#include "graphics/pixel_lanes.h"

#include <algorithm>
#include <memory>

namespace percussomatic {

namespace {

const std::uint32_t* rowOf(const PixelImage& image, int y) noexcept {
    return image.pixels.data() + static_cast<std::ptrdiff_t>(y) * image.width;
}

int halfOf(int size) noexcept {
    return (size + 1) / 2;
}

// One row of a picture and the pixels it comes over.
template <typename PutRow>
void eachRow(const PixelImage& picture, int left, int top, const PixelView& target, PutRow put) {
    const int firstX = std::max(0, -left), endX = std::min(picture.width, target.width - left);
    const int firstY = std::max(0, -top), endY = std::min(picture.height, target.height - top);
    for (int y = firstY; y < endY && firstX < endX; ++y) {
        put(rowOf(picture, y) + firstX, target.row(top + y) + left + firstX,
            static_cast<std::size_t>(endX - firstX));
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

// Two rows of that many pixels, averaged to one of half as many.
void halveRows(const std::uint32_t* upper, const std::uint32_t* lower, int width,
               std::uint32_t* out) {
    int x = 0;
    for (; 2 * x + 8 <= width; x += 4) {
        storeFour(out + x, averagedFour(upper + 2 * x, lower + 2 * x));
    }
    if (const int rest = halfOf(width) - x; rest > 0) {
        std::uint32_t ends[2][8], last[4];
        for (int i = 0; i < 8; ++i) {
            const int column = std::min(2 * x + i, width - 1);
            ends[0][i] = upper[column];
            ends[1][i] = lower[column];
        }
        storeFour(last, averagedFour(ends[0], ends[1]));
        std::copy_n(last, rest, out + x);
    }
}

// The rows of a picture that is halved so many times, made when they are asked for: a whole copy
// would cost more in memory that is touched for the first time than all else. Two rows next to each
// other stay as they are until a third is asked for.
class HalvedRows {
public:
    HalvedRows(const PixelImage& picture, int times)
        : width(picture.width), height(picture.height), picture_(picture) {
        if (times > 0) {
            finer_ = std::make_unique<HalvedRows>(picture, times - 1);
            width = halfOf(finer_->width);
            height = halfOf(finer_->height);
            rows_[0].resize(static_cast<std::size_t>(width));
            rows_[1] = rows_[0];
        }
    }

    const std::uint32_t* row(int y) {
        if (finer_ == nullptr) {
            return rowOf(picture_, y);
        }
        const auto place = static_cast<std::size_t>(y % 2);
        std::vector<std::uint32_t>& kept = rows_[place];
        if (numbers_[place] != y) {
            const int last = finer_->height - 1;
            halveRows(finer_->row(2 * y), finer_->row(std::min(2 * y + 1, last)), finer_->width,
                      kept.data());
            numbers_[place] = y;
        }
        return kept.data();
    }

    int width, height;

private:
    const PixelImage& picture_;
    std::unique_ptr<HalvedRows> finer_; // null for the picture itself
    std::vector<std::uint32_t> rows_[2];
    int numbers_[2] = {-1, -1};
};

// Between which pixels of the source those of the target lie: the first of two, and how near to
// the second in 256ths, once for each 16 bits. The last stands there four times, so that fours may
// begin at any.
struct Between {
    std::vector<int> first;
    std::vector<std::uint32_t> weight;
};

Between between(int from, int to) {
    Between places;
    for (std::int64_t i = 0; i < to + 3; ++i) {
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
void interpolate(HalvedRows& picture, const PixelRect& shown, const PixelView& target) {
    const PixelRect seen = intersected(shown, {0, 0, target.width, target.height});
    if (seen.width() <= 0) {
        return;
    }
    const Between columns = between(picture.width, shown.width());
    const Between rows = between(picture.height, shown.height());
    const auto begin = static_cast<std::size_t>(seen.left - shown.left);
    const auto end = static_cast<std::size_t>(seen.right - shown.left);
    const int firstX = columns.first[begin], lastX = columns.first[end - 1] + 1;
    // Both lines are longer than a row, so that fours need no end of their own, and the last pixel
    // has a neighbour, of which nothing is taken.
    std::vector<std::uint32_t> line(static_cast<std::size_t>(picture.width) + 4),
        out(end - begin + 4);
    for (int y = seen.top; y < seen.bottom; ++y) {
        const auto place = static_cast<std::size_t>(y - shown.top);
        const std::uint32_t* upper = picture.row(rows.first[place]);
        const std::uint32_t* lower =
            picture.row(std::min(rows.first[place] + 1, picture.height - 1));
        const __m128i weight = _mm_set1_epi32(static_cast<int>(rows.weight[place]));
        int x = firstX;
        for (; x + 4 <= picture.width && x <= lastX; x += 4) {
            storeFour(&line[static_cast<std::size_t>(x)],
                      mixedFour(loadFour(upper + x), loadFour(lower + x), weight));
        }
        if (const int rest = picture.width - x; rest > 0 && rest < 4) {
            std::uint32_t ends[2][4] = {};
            std::copy_n(upper + x, rest, ends[0]);
            std::copy_n(lower + x, rest, ends[1]);
            storeFour(&line[static_cast<std::size_t>(x)],
                      mixedFour(loadFour(ends[0]), loadFour(ends[1]), weight));
        }
        for (std::size_t i = begin; i < end; i += 4) {
            const int* first = &columns.first[i];
            const auto [left, right] =
                neighboursAt({line.data() + first[0], line.data() + first[1],
                              line.data() + first[2], line.data() + first[3]});
            storeFour(&out[i - begin], mixedFour(left, right, loadFour(&columns.weight[i])));
        }
        std::copy_n(out.data(), seen.width(), target.row(y) + seen.left);
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
    PixelImage half = blankImage(halfOf(image.width), halfOf(image.height));
    for (int y = 0; y < half.height; ++y) {
        halveRows(rowOf(image, 2 * y), rowOf(image, std::min(2 * y + 1, image.height - 1)),
                  image.width, viewOf(half).row(y));
    }
    return half;
}

void copyScaled(const PixelImage& image, const PixelRect& shown, const PixelView& target) {
    if (shown.width() <= 0 || shown.height() <= 0) {
        return;
    }
    int times = 0;
    for (int width = image.width, height = image.height;
         width >= 2 * shown.width() && height >= 2 * shown.height(); ++times) {
        width = halfOf(width);
        height = halfOf(height);
    }
    HalvedRows rows(image, times);
    interpolate(rows, shown, target);
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
        w = halfOf(w);
        h = halfOf(h);
        if (w < width * largestScale || h < height * largestScale) {
            break;
        }
        ++count;
    }
    return count;
}

} // namespace percussomatic
