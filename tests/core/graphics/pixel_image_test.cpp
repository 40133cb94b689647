#include "graphics/pixel_image.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace percussomatic {
namespace {

TEST(PixelImage, ColoursAreMultipliedByAlphaAndRounded) {
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
        for (std::uint32_t colour = 0; colour < 256; ++colour) {
            const auto scaled = [alpha](std::uint32_t channel) {
                return static_cast<std::uint32_t>(std::lround(channel * alpha / 255.0));
            };
            const std::uint32_t red = 255 - colour, green = colour, blue = colour / 2;
            PixelImage image{1, 1, {alpha << 24 | red << 16 | green << 8 | blue}};
            premultiply(image);
            ASSERT_EQ(image.pixels[0],
                      alpha << 24 | scaled(red) << 16 | scaled(green) << 8 | scaled(blue))
                << "alpha " << alpha << ", colour " << colour;
        }
    }
}

PixelImage noise(int width, int height) {
    PixelImage image = blankImage(width, height);
    std::uint32_t random = 1;
    for (std::uint32_t& pixel : image.pixels) {
        random = random * 1664525U + 1013904223U;
        pixel = random;
    }
    premultiply(image);
    return image;
}

int channelOf(std::uint32_t pixel, int channel) {
    return static_cast<int>((pixel >> (8 * channel)) & 0xFF);
}

// One channel after the other, as the header words it.
template <typename Channel>
PixelImage plain(int width, int height, Channel channel) {
    PixelImage image = blankImage(width, height);
    for (int i = 0; i < 4 * width * height; ++i) {
        const int value = channel(i / 4 % width, i / 4 / width, i % 4);
        image.pixels[static_cast<std::size_t>(i / 4)] |= static_cast<std::uint32_t>(value)
                                                         << (8 * (i % 4));
    }
    return image;
}

TEST(PixelImage, FourPixelsAtOnceGiveTheSameAsOneChannelAfterTheOther) {
    for (int width = 1; width < 26; ++width) {
        const int height = 26 - width;
        const PixelImage image = noise(width, height);
        const auto at = [&](int x, int y, int channel) {
            const int index = std::min(y, height - 1) * width + std::min(x, width - 1);
            return channelOf(image.pixels[static_cast<std::size_t>(index)], channel);
        };
        const auto average = [&](int x, int y, int c) {
            return (at(2 * x, 2 * y, c) + at(2 * x + 1, 2 * y, c) + at(2 * x, 2 * y + 1, c) +
                    at(2 * x + 1, 2 * y + 1, c) + 2) /
                   4;
        };
        const PixelImage half = halved(image);
        ASSERT_EQ(half.pixels, plain((width + 1) / 2, (height + 1) / 2, average).pixels) << width;
        ASSERT_EQ(scaled(image, width, height).pixels, image.pixels);
        if (width >= 8 && height >= 8) {
            ASSERT_EQ(scaled(image, width / 3, height / 3).pixels,
                      scaled(half, width / 3, height / 3).pixels);
        }
        for (int wanted = width / 2 + 1; wanted < 3 * width; ++wanted) {
            const int tall = (height * 3 + 3) / 4;
            const auto place = [](int i, int from, int to) {
                return std::clamp(((2 * i + 1) * from * 256 / to - 256) / 2, 0, (from - 1) * 256);
            };
            const auto mixed = [](int a, int b, int weight) {
                return (a * (256 - weight) + b * weight + 128) / 256;
            };
            const auto weighted = [&](int x, int y, int c) {
                const int u = place(x, width, wanted), v = place(y, height, tall);
                const auto column = [&](int left) {
                    return mixed(at(left, v / 256, c), at(left, v / 256 + 1, c), v % 256);
                };
                return mixed(column(u / 256), column(u / 256 + 1), u % 256);
            };
            const PixelImage whole = scaled(image, wanted, tall);
            ASSERT_EQ(whole.pixels, plain(wanted, tall, weighted).pixels)
                << width << " to " << wanted;
            // Any part of it alone.
            const int left = wanted / 3, top = tall / 4;
            PixelImage part = blankImage(wanted - left - left / 2, tall - top), same = part;
            copyScaled(image, {-left, -top, wanted - left, tall - top}, viewOf(part));
            copyPixels(whole, -left, -top, viewOf(same));
            ASSERT_EQ(part.pixels, same.pixels) << width << " to " << wanted;
        }
    }
}

TEST(PixelImage, BlendingPutsOneOverTheOtherAndCutsWhatLiesOutside) {
    const PixelImage over = noise(8, 6), under = noise(10, 7);
    for (const auto& [left, top] :
         {std::pair(1, 1), std::pair(-3, -2), std::pair(6, 4), std::pair(-8, 0), std::pair(0, 7)}) {
        PixelImage blended = under, copied = under;
        blendPixels(over, left, top, viewOf(blended));
        copyPixels(over, left, top, viewOf(copied));
        for (int i = 0; i < under.width * under.height; ++i) {
            const int x = i % under.width - left, y = i / under.width - top;
            const bool covered = x >= 0 && x < over.width && y >= 0 && y < over.height;
            const auto index = static_cast<std::size_t>(i);
            const std::uint32_t ground = under.pixels[index];
            const std::uint32_t source =
                covered ? over.pixels[static_cast<std::size_t>(y * over.width + x)] : 0;
            ASSERT_EQ(copied.pixels[index], covered ? source : ground);
            for (int channel = 0; channel < 4; ++channel) {
                const double through = (255 - channelOf(source, 3)) / 255.0;
                ASSERT_NEAR(channelOf(blended.pixels[index], channel),
                            channelOf(source, channel) + channelOf(ground, channel) * through,
                            0.51);
            }
        }
    }
}

TEST(PixelImage, AFillWeakensWhatLiesThereByItsOpacity) {
    PixelImage ground = blankImage(258, 3);
    for (std::uint32_t x = 0; x < 256; ++x) {
        ground.pixels[258 + x] = x | x << 8 | x << 16 | x << 24;
    }
    for (std::uint32_t alpha = 0; alpha < 256; ++alpha) {
        PixelImage filled = ground;
        fillPixels({-5, 1, 256, 2}, alpha << 24 | 0x00FF00, viewOf(filled));
        for (std::uint32_t x = 0; x < 258; ++x) {
            EXPECT_EQ(filled.pixels[x] | filled.pixels[2 * 258 + x], 0U) << "beside it";
            const std::uint32_t weak = (x * (255 - alpha) + 127) / 255;
            ASSERT_EQ(filled.pixels[258 + x],
                      x < 256 ? (weak + alpha) << 24 | weak << 16 | (weak + alpha) << 8 | weak : 0U)
                << alpha << " over " << x;
        }
    }
}

} // namespace
} // namespace percussomatic
