// SPDX-License-Identifier: MIT
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

// Calls draw(sourceRow, targetRow, pixelCount) for each row of the picture, clipped to the target.
template <typename Draw>
void forEachClippedRow(const PixelImage& picture, int left, int top, const PixelView& target,
                       Draw draw) {
    const int firstX = std::max(0, -left), endX = std::min(picture.width, target.width - left);
    const int firstY = std::max(0, -top), endY = std::min(picture.height, target.height - top);
    for (int y = firstY; y < endY && firstX < endX; ++y) {
        draw(rowOf(picture, y) + firstX, target.row(top + y) + left + firstX,
             static_cast<std::size_t>(endX - firstX));
    }
}

std::uint32_t premultiplied(std::uint32_t pixel) noexcept {
    const std::uint32_t alpha = pixel >> 24;
    if (alpha == 255) {
        return pixel;
    }
    const auto multiplied = [&](int shift) {
        return ((((pixel >> shift) & 0xFF) * alpha + 127) / 255) << shift;
    };
    return (alpha << 24) | multiplied(16) | multiplied(8) | multiplied(0);
}

// Blends source pixels over a row, four at a time. sourceAt(i) returns the source pixels from i on.
template <typename SourceAt>
void blendRow(std::uint32_t* row, std::size_t count, SourceAt sourceAt) {
    std::size_t i = 0;
    for (; i + 4 <= count; i += 4) {
        storeFour(row + i, blendFour(sourceAt(i), loadFour(row + i)));
    }
    if (i < count) {
        std::uint32_t rest[4] = {};
        std::copy_n(row + i, count - i, rest);
        storeFour(rest, blendFour(sourceAt(i), loadFour(rest)));
        std::copy_n(rest, count - i, row + i);
    }
}

// Averages two rows of `width` pixels to one row of half the width, rounded up.
void halveRows(const std::uint32_t* upper, const std::uint32_t* lower, int width,
               std::uint32_t* out) {
    int x = 0;
    for (; 2 * x + 8 <= width; x += 4) {
        storeFour(out + x, averageFour(upper + 2 * x, lower + 2 * x));
    }
    if (const int remaining = halfOf(width) - x; remaining > 0) {
        std::uint32_t ends[2][8], last[4];
        for (int i = 0; i < 8; ++i) {
            const int column = std::min(2 * x + i, width - 1);
            ends[0][i] = upper[column];
            ends[1][i] = lower[column];
        }
        storeFour(last, averageFour(ends[0], ends[1]));
        std::copy_n(last, remaining, out + x);
    }
}

// Rows of a picture after a number of halvings, computed on demand: allocating a whole halved copy
// would take longer than all the arithmetic. The last even and the last odd row are cached.
class DownsampledRows {
public:
    DownsampledRows(const PixelImage& picture, int halvingCount)
        : width(picture.width), height(picture.height), picture_(picture) {
        if (halvingCount > 0) {
            finer_ = std::make_unique<DownsampledRows>(picture, halvingCount - 1);
            width = halfOf(finer_->width);
            height = halfOf(finer_->height);
            cachedRows_[0].resize(static_cast<std::size_t>(width));
            cachedRows_[1] = cachedRows_[0];
        }
    }

    // Valid until another row of the same parity is requested.
    const std::uint32_t* row(int y) {
        if (finer_ == nullptr) {
            return rowOf(picture_, y);
        }
        std::vector<std::uint32_t>& cached = cachedRows_[y % 2];
        if (cachedY_[y % 2] != y) {
            const int last = finer_->height - 1;
            halveRows(finer_->row(2 * y), finer_->row(std::min(2 * y + 1, last)), finer_->width,
                      cached.data());
            cachedY_[y % 2] = y;
        }
        return cached.data();
    }

    int width, height;

private:
    const PixelImage& picture_;
    std::unique_ptr<DownsampledRows> finer_;   // one halving less; null for the picture itself
    std::vector<std::uint32_t> cachedRows_[2]; // even, odd
    int cachedY_[2] = {-1, -1};
};

// For each target pixel of one axis, the two source pixels to interpolate between. The last entry
// is repeated three times, so that four entries can be read from any index.
struct SourcePositions {
    std::vector<int> first;            // the second source pixel is the next one
    std::vector<std::uint32_t> weight; // of the second, in 1/256, in both 16-bit halves
};

SourcePositions sourcePositions(int sourceSize, int targetSize) {
    SourcePositions positions;
    for (std::int64_t i = 0; i < targetSize + 3; ++i) {
        // Centre of target pixel i in 1/256 of a source pixel, from the centre of source pixel 0.
        const std::int64_t centre =
            ((2 * std::min<std::int64_t>(i, targetSize - 1) + 1) * sourceSize * 256 / targetSize -
             256) /
            2;
        const std::int64_t position = std::clamp<std::int64_t>(centre, 0, (sourceSize - 1) * 256LL);
        positions.first.push_back(static_cast<int>(position >> 8));
        positions.weight.push_back(static_cast<std::uint32_t>(position & 0xFF) * 0x10001U);
    }
    return positions;
}

// Draws the picture at `shown` on the target, interpolated bilinearly.
void interpolate(DownsampledRows& picture, const PixelRect& shown, const PixelView& target) {
    const PixelRect clipped = intersected(shown, {0, 0, target.width, target.height});
    if (clipped.width() <= 0) {
        return;
    }
    const SourcePositions columns = sourcePositions(picture.width, shown.width());
    const SourcePositions rows = sourcePositions(picture.height, shown.height());
    const auto begin = static_cast<std::size_t>(clipped.left - shown.left);
    const auto end = static_cast<std::size_t>(clipped.right - shown.left);
    const int firstX = columns.first[begin], lastX = columns.first[end - 1] + 1;
    // Padded, so that four pixels can be read or written at any index. The pixel after the last is
    // read, but with a weight of 0.
    std::vector<std::uint32_t> line(static_cast<std::size_t>(picture.width) + 4),
        out(end - begin + 4);
    for (int y = clipped.top; y < clipped.bottom; ++y) {
        const auto shownRow = static_cast<std::size_t>(y - shown.top);
        const std::uint32_t* upper = picture.row(rows.first[shownRow]);
        const std::uint32_t* lower =
            picture.row(std::min(rows.first[shownRow] + 1, picture.height - 1));
        const __m128i weight = _mm_set1_epi32(static_cast<int>(rows.weight[shownRow]));
        int x = firstX;
        for (; x + 4 <= picture.width && x <= lastX; x += 4) {
            storeFour(line.data() + x,
                      interpolateFour(loadFour(upper + x), loadFour(lower + x), weight));
        }
        if (const int remaining = picture.width - x; remaining > 0 && remaining < 4) {
            std::uint32_t ends[2][4] = {};
            std::copy_n(upper + x, remaining, ends[0]);
            std::copy_n(lower + x, remaining, ends[1]);
            storeFour(line.data() + x,
                      interpolateFour(loadFour(ends[0]), loadFour(ends[1]), weight));
        }
        for (std::size_t i = begin; i < end; i += 4) {
            const int* first = &columns.first[i];
            const auto [left, right] =
                gatherPairs({line.data() + first[0], line.data() + first[1], line.data() + first[2],
                             line.data() + first[3]});
            storeFour(&out[i - begin], interpolateFour(left, right, loadFour(&columns.weight[i])));
        }
        std::copy_n(out.data(), clipped.width(), target.row(y) + clipped.left);
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
    const auto copyRow = [](const std::uint32_t* source, std::uint32_t* row, std::size_t count) {
        std::copy_n(source, count, row);
    };
    forEachClippedRow(picture, left, top, target, copyRow);
}

void blendPixels(const PixelImage& picture, int left, int top, const PixelView& target) noexcept {
    const auto blend = [](const std::uint32_t* source, std::uint32_t* row, std::size_t count) {
        blendRow(row, count, [&](std::size_t i) {
            std::uint32_t last[4] = {};
            if (count - i >= 4) {
                return loadFour(source + i);
            }
            std::copy_n(source + i, count - i, last);
            return loadFour(last);
        });
    };
    forEachClippedRow(picture, left, top, target, blend);
}

void fillPixels(const PixelRect& rect, std::uint32_t argb, const PixelView& target) noexcept {
    const FourPixels four = _mm_set1_epi32(static_cast<int>(premultiplied(argb)));
    const PixelRect clipped = intersected(rect, {0, 0, target.width, target.height});
    for (int y = clipped.top; y < clipped.bottom; ++y) {
        std::uint32_t* row = target.row(y) + clipped.left;
        if (argb >> 24 == 0xFF) {
            std::fill_n(row, clipped.width(), argb);
        } else {
            blendRow(row, static_cast<std::size_t>(clipped.width()),
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
    int halvingCount = 0;
    for (int width = image.width, height = image.height;
         width >= 2 * shown.width() && height >= 2 * shown.height(); ++halvingCount) {
        width = halfOf(width);
        height = halfOf(height);
    }
    DownsampledRows rows(image, halvingCount);
    interpolate(rows, shown, target);
}

PixelImage scaled(const PixelImage& image, int width, int height) {
    PixelImage result = blankImage(width, height);
    copyScaled(image, {0, 0, width, height}, viewOf(result));
    return result;
}

int halvings(int width, int height, double maxScale) noexcept {
    int count = 0;
    int w = width, h = height;
    while (w > 1 && h > 1) {
        w = halfOf(w);
        h = halfOf(h);
        if (w < width * maxScale || h < height * maxScale) {
            break;
        }
        ++count;
    }
    return count;
}

} // namespace percussomatic
