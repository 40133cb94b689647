// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace percussomatic {

// A picture in memory: rows of 32-bit pixels, 8 bits each of blue, green, red and alpha from the
// lowest byte up, colours premultiplied by alpha.
struct PixelImage {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;
};

// A rectangle of somebody else's pixels of the same kind; the first of a row lies `stride` pixels
// behind the first of the row above.
struct PixelView {
    std::uint32_t* pixels;
    int width, height;
    std::ptrdiff_t stride;

    std::uint32_t* row(int y) const noexcept { return pixels + y * stride; }
    PixelView part(const PixelRect& rect) const noexcept {
        return {row(rect.top) + rect.left, rect.width(), rect.height(), stride};
    }
};

PixelImage blankImage(int width, int height); // transparent; empty unless both are positive
PixelView viewOf(PixelImage& image) noexcept;

// Puts the picture with its upper left corner at (left, top) of the target, which cuts off what
// lies outside: in place of what is there, or over it.
void copyPixels(const PixelImage& picture, int left, int top, const PixelView& target) noexcept;
void blendPixels(const PixelImage& picture, int left, int top, const PixelView& target) noexcept;

// A colour (0xAARRGGBB, straight) over the part of the rectangle that lies on the target.
void fillPixels(const PixelRect& rect, std::uint32_t argb, const PixelView& target) noexcept;

// Multiplies the colours of straight pixels by their alpha, rounded.
void premultiply(PixelImage& image) noexcept;

// Half the size, rounded up: every pixel is the rounded average of 2 x 2. An odd last row or column
// is averaged with itself. Averaging before drawing is what keeps a panel shown at a fifth of its
// size free of jagged edges; the system's own filters look at 2 x 2 pixels only.
PixelImage halved(const PixelImage& image);

// Any other size: halved while it is still at least as large as wanted, then every pixel is
// weighted from the 2 x 2 that lie about its middle, in steps of 1/256. Pictures end with their
// last pixels: nothing is looked for beyond.
PixelImage scaled(const PixelImage& image, int width, int height);

// The same, straight to its place on the target, which cuts off what lies outside: a picture as
// large as the panel takes less time than the memory for it.
void copyScaled(const PixelImage& image, const PixelRect& shown, const PixelView& target);

// How often a picture of `width` x `height` can be halved and still be at least as large as when it
// is shown at `largestScale` (client pixels per pixel).
int halvings(int width, int height, double largestScale) noexcept;

} // namespace percussomatic
