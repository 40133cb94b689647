// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace percussomatic {

// A picture in memory: rows of 32-bit pixels, from the lowest byte up blue, green, red and alpha, 8
// bits each, premultiplied by alpha.
struct PixelImage {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;
};

// A non-owning view of a rectangle of such pixels. Rows begin `stride` pixels apart.
struct PixelView {
    std::uint32_t* pixels;
    int width, height;
    std::ptrdiff_t stride;

    std::uint32_t* row(int y) const noexcept { return pixels + y * stride; }
    PixelView part(const PixelRect& rect) const noexcept {
        return {row(rect.top) + rect.left, rect.width(), rect.height(), stride};
    }
};

PixelImage blankImage(int width, int height); // transparent; 0 x 0 unless both are positive
PixelView viewOf(PixelImage& image) noexcept;

// Draws the picture with its upper left corner at (left, top) of the target, clipped to the target.
// copyPixels() replaces the target's pixels, blendPixels() draws over them.
void copyPixels(const PixelImage& picture, int left, int top, const PixelView& target) noexcept;
void blendPixels(const PixelImage& picture, int left, int top, const PixelView& target) noexcept;

// Draws a colour (0xAARRGGBB, not premultiplied) over the rectangle, clipped to the target.
void fillPixels(const PixelRect& rect, std::uint32_t argb, const PixelView& target) noexcept;

// Multiplies the colours by alpha, rounded. The image must not be premultiplied yet.
void premultiply(PixelImage& image) noexcept;

// Returns the image at half its size, rounded up. Every pixel is the rounded average of 2 x 2
// pixels; an odd last row or column is averaged with itself. Halving first avoids jagged edges on a
// panel shown at a fifth of its size, because the system's own filters read only 2 x 2 pixels.
PixelImage halved(const PixelImage& image);

// Returns the image at width x height: halved as long as the result is at least that large, then
// interpolated bilinearly with weights in steps of 1/256. Positions beyond the outermost pixel
// centres are clamped to them.
PixelImage scaled(const PixelImage& image, int width, int height);

// Writes scaled(image, shown.width(), shown.height()) at `shown` on the target, clipped to the
// target. Saves the memory for the scaled image, which for one as large as the panel takes longer
// to allocate than to compute.
void copyScaled(const PixelImage& image, const PixelRect& shown, const PixelView& target);

// Number of times that a picture of `width` x `height` can be halved and still be at least as large
// as when it is shown at `maxScale` (client pixels per pixel).
int halvings(int width, int height, double maxScale) noexcept;

} // namespace percussomatic
