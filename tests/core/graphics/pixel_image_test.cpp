// SPDX-License-Identifier: MIT
#include "graphics/pixel_image.h"
#include "graphics/scaled_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace percussomatic {
namespace {

using Pixels = std::vector<std::uint32_t>;

// One channel of a pixel; 0 is blue, 3 alpha. Beyond the right and bottom edge that of the last
// one.
int at(const PixelImage& image, int x, int y, int channel) {
    const int index = std::min(y, image.height - 1) * image.width + std::min(x, image.width - 1);
    return static_cast<int>(image.pixels[static_cast<std::size_t>(index)] >> (8 * channel) & 0xFF);
}

// The pixels of an image, computed by valueAt(x, y, channel).
template <typename ValueAt>
Pixels reference(int width, int height, ValueAt valueAt) {
    Pixels pixels;
    for (int i = 0; i < width * height; ++i) {
        std::uint32_t pixel = 0;
        for (int channel = 3; channel >= 0; --channel) {
            pixel = pixel << 8 | static_cast<std::uint32_t>(valueAt(i % width, i / width, channel));
        }
        pixels.push_back(pixel);
    }
    return pixels;
}

PixelImage noise(int width, int height) {
    std::uint32_t random = 1;
    const auto next = [&](int, int, int) { return (random = random * 1664525 + 1013904223) >> 24; };
    PixelImage image{width, height, reference(width, height, next)};
    premultiply(image);
    return image;
}

TEST(PixelImage, PremultiplyingRounds) {
    const auto straight = [](int x, int y, int c) { return c == 3 ? x : c == 0 ? y : 255 - y / c; };
    PixelImage image{256, 256, reference(256, 256, straight)};
    premultiply(image);
    const auto rounded = [&](int x, int y, int c) {
        return c == 3 ? x : (2 * straight(x, y, c) * x + 255) / 510;
    };
    EXPECT_EQ(image.pixels, reference(256, 256, rounded));
}

TEST(PixelImage, HalvingAveragesBlocksOfFourPixels) {
    for (int width = 1, height = 25; width < 26; ++width, --height) {
        const PixelImage image = noise(width, height), half = halved(image);
        const auto average = [&](int x, int y, int c) {
            return (at(image, 2 * x, 2 * y, c) + at(image, 2 * x + 1, 2 * y, c) +
                    at(image, 2 * x, 2 * y + 1, c) + at(image, 2 * x + 1, 2 * y + 1, c) + 2) /
                   4;
        };
        ASSERT_EQ(half.pixels, reference((width + 1) / 2, (height + 1) / 2, average)) << width;
        if (width >= 2 && height >= 2) { // scaling to half or less halves first
            ASSERT_EQ(scaled(image, width / 2, height / 2).pixels,
                      scaled(half, width / 2, height / 2).pixels);
        }
    }
}

TEST(PixelImage, ScalingInterpolatesBetweenPixelCentres) {
    const auto source = [](int i, int from, int to) { // in 1/256 pixel
        return std::clamp(((2 * i + 1) * from * 256 / to - 256) / 2, 0, (from - 1) * 256);
    };
    const auto mix = [](int a, int b, int weight) {
        return (a * (256 - weight) + b * weight + 128) / 256;
    };
    for (int width = 1, height = 25; width < 26; ++width, --height) {
        const PixelImage image = noise(width, height);
        ASSERT_EQ(scaled(image, width, height).pixels, image.pixels);
        const int newHeight = (height * 3 + 3) / 4;
        for (int newWidth = width / 3 + 1; newWidth < 3 * width; ++newWidth) {
            SCOPED_TRACE(testing::Message() << width << " to " << newWidth);
            const auto value = [&](int x, int y, int c) {
                const int u = source(x, width, newWidth), v = source(y, height, newHeight);
                const auto column = [&](int left) {
                    return mix(at(image, left, v / 256, c), at(image, left, v / 256 + 1, c),
                               v % 256);
                };
                return mix(column(u / 256), column(u / 256 + 1), u % 256);
            };
            const PixelImage whole = scaled(image, newWidth, newHeight);
            ASSERT_EQ(whole.pixels, reference(newWidth, newHeight, value));
            const int left = newWidth / 3, top = newHeight / 4;
            PixelImage part = blankImage(newWidth - left - left / 2, newHeight - top), copy = part;
            copyScaled(image, {-left, -top, newWidth - left, newHeight - top}, viewOf(part));
            copyPixels(whole, -left, -top, viewOf(copy));
            ASSERT_EQ(part.pixels, copy.pixels) << "clipped";
        }
    }
}

TEST(PixelImage, PicturesAreCopiedOrBlendedAndClipped) {
    const PixelImage over = noise(8, 6), under = noise(10, 7);
    for (const PixelPoint corner : {PixelPoint{1, 1}, {-3, -2}, {6, 4}, {-8, 0}, {0, 7}}) {
        PixelImage blended = under, copied = under;
        blendPixels(over, corner.x, corner.y, viewOf(blended));
        copyPixels(over, corner.x, corner.y, viewOf(copied));
        const auto covered = [=](int x, int y) {
            return contains({corner.x, corner.y, corner.x + 8, corner.y + 6}, {x, y});
        };
        const auto source = [&](int x, int y, int c) {
            return covered(x, y) ? at(over, x - corner.x, y - corner.y, c) : 0;
        };
        EXPECT_EQ(copied.pixels, reference(10, 7, [&](int x, int y, int c) {
                      return covered(x, y) ? source(x, y, c) : at(under, x, y, c);
                  }));
        EXPECT_EQ(blended.pixels, reference(10, 7, [&](int x, int y, int c) {
                      const int transparency = 255 - source(x, y, 3);
                      return source(x, y, c) + (at(under, x, y, c) * transparency + 127) / 255;
                  }));
    }
}

TEST(PixelImage, FillingEqualsBlendingAPictureOfOneColour) {
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
        const std::uint32_t argb = alpha << 24 | 0x20FF77;
        PixelImage filled = noise(258, 3), blended = filled, picture{261, 1, Pixels(261, argb)};
        fillPixels({-5, 1, 256, 2}, argb, viewOf(filled));
        premultiply(picture);
        blendPixels(picture, -5, 1, viewOf(blended));
        ASSERT_EQ(filled.pixels, blended.pixels) << alpha;
    }
}

TEST(PixelImage, HalvingsLeaveThePictureAtLeastAsLargeAsItIsShown) {
    EXPECT_EQ(halvings(100, 100, 0.5), 1);
    EXPECT_EQ(halvings(100, 100, 0.25), 2);
    EXPECT_EQ(halvings(100, 101, 0.504), 0);
    EXPECT_EQ(halvings(101, 100, 0.504), 0);
    EXPECT_EQ(halvings(64, 2, 0.01), 1);
}

TEST(ScaledPictures, AreCachedBySizeUntilTheyTakeTooMuchMemory) {
    PixelImage picture = noise(8, 8);
    const Pixels wide = cachedScaled(picture, 6, 3).pixels;
    EXPECT_EQ(wide, scaled(picture, 6, 3).pixels);
    EXPECT_EQ(cachedScaled(picture, 6, 4).pixels, scaled(picture, 6, 4).pixels);
    picture = blankImage(8, 8);
    EXPECT_EQ(cachedScaled(picture, 6, 3).pixels, wide) << "still cached";
    cachedScaled(picture, 2049, 2048);
    cachedScaled(picture, 1, 1);
    EXPECT_EQ(cachedScaled(picture, 6, 3).pixels, Pixels(18)) << "the cache was full";
}

TEST(PixelRect, CombinesInEitherOrderAndTouchingIsNoOverlap) {
    const PixelRect a{2, 3, 6, 8}, b{5, 1, 9, 4}, right{6, 3, 7, 8}, below{2, 8, 6, 9};
    EXPECT_EQ(united(a, b), (PixelRect{2, 1, 9, 8}));
    EXPECT_EQ(united(b, a), (PixelRect{2, 1, 9, 8}));
    EXPECT_EQ(intersected(a, right), PixelRect{});
    EXPECT_TRUE(overlap(a, b) && overlap(b, a));
    EXPECT_FALSE(overlap(a, right) || overlap(right, a) || overlap(a, below) || overlap(below, a));
    EXPECT_EQ(inflated(a, 1), (PixelRect{1, 2, 7, 9}));
}

} // namespace
} // namespace percussomatic
