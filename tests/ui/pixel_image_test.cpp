#include "ui/pixel_image.h"

#include <gtest/gtest.h>

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

TEST(PixelImage, HalvingAveragesTwoByTwoPixelsChannelByChannel) {
    const struct {
        const char* what;
        int width, height;
        std::vector<std::uint32_t> pixels;
        std::vector<std::uint32_t> half;
    } cases[] = {
        {"a half rounds up, a quarter down",
         2,
         2,
         {0x01010001, 0x01000000, 0, 0x00FF0000},
         {0x01400000}},
        {"no channel spills into the next",
         2,
         2,
         {0xFF00FF00, 0xFF00FF00, 0xFF00FF00, 0xFF00FF01},
         {0xFF00FF00}},
        {"odd edges are averaged with themselves",
         3,
         3,
         {0, 4, 8, 4, 8, 100, 40, 60, 200},
         {4, 54, 50, 200}},
        {"one row", 3, 1, {10, 30, 50}, {20, 50}},
        {"one pixel", 1, 1, {0x80402010}, {0x80402010}},
    };
    for (const auto& [what, width, height, pixels, half] : cases) {
        SCOPED_TRACE(what);
        const PixelImage result = halved({width, height, pixels});
        EXPECT_EQ(std::pair(result.width, result.height),
                  std::pair((width + 1) / 2, (height + 1) / 2));
        EXPECT_EQ(result.pixels, half);
    }
}

TEST(PixelImage, HalvedPicturesStayAsLargeAsTheyAreShown) {
    const struct {
        int width, height;
        double largestScale;
        int count;
    } cases[] = {
        {7995, 5183, 0.202, 2}, {100, 100, 0.5, 1}, {100, 100, 0.501, 0},
        {101, 101, 0.5, 1},     {1, 64, 0.001, 0},  {64, 64, 0.0, 6},
    };
    for (const auto& [width, height, largestScale, count] : cases) {
        EXPECT_EQ(halvings(width, height, largestScale), count)
            << width << " x " << height << " at " << largestScale;
    }
}

} // namespace
} // namespace percussomatic
