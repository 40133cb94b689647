#pragma once

#include <cstddef>
#include <span>

namespace percussomatic {

// The image of an ICO file whose size differs least from width x height (sum of both differences,
// the first one on ties). Empty when the file is no icon or holds no usable image.
std::span<const std::byte> bestIconImage(std::span<const std::byte> file, int width,
                                         int height) noexcept;

} // namespace percussomatic
