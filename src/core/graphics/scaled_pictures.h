// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_image.h"

namespace percussomatic {

// Returns the picture scaled to width x height; empty unless both are positive. Scaling costs a
// hundred times as much as copying, so results are cached, by the picture's address. The reference
// is valid until the next call. GUI thread.
const PixelImage& cachedScaled(const PixelImage& picture, int width, int height);

// Empties the cache. To be called before a cached picture is destroyed or changed, and when the
// window changes its size.
void clearScaledPictures() noexcept;

} // namespace percussomatic
