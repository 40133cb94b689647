#pragma once

#include <cstdint>
#include <vector>

namespace percussomatic {

// A picture in memory: rows of 32-bit pixels, 8 bits each of blue, green, red and alpha from the
// lowest byte up, colours premultiplied by alpha.
struct PixelImage {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;
};

// Multiplies the colours of straight pixels by their alpha, rounded.
void premultiply(PixelImage& image) noexcept;

// Half the size, rounded up: every pixel is the rounded average of 2 x 2. An odd last row or column
// is averaged with itself. Averaging before drawing is what keeps a panel shown at a fifth of its
// size free of jagged edges; the system's own filters look at 2 x 2 pixels only.
PixelImage halved(const PixelImage& image);

// How often a picture of `width` x `height` can be halved and still be at least as large as when it
// is shown at `largestScale` (client pixels per pixel).
int halvings(int width, int height, double largestScale) noexcept;

} // namespace percussomatic
