#pragma once

#include "graphics/pixel_image.h"

namespace percussomatic {

// The picture at the size in which it is shown. Scaling costs a hundred times what a copy does, so
// it is kept until the window changes its size. Good until the next call; the picture must live as
// long. Empty unless width and height are positive. GUI thread, as drawing is.
const PixelImage& cachedScaled(const PixelImage& picture, int width, int height);

void clearScaledPictures() noexcept;

} // namespace percussomatic
