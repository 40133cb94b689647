// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <span>

namespace percussomatic {

// Returns the bytes of the ICO file's image whose size differs least from width x height (sum of
// both differences; the first image on ties). Empty if the file is not an icon or has no usable
// image. Any thread.
std::span<const std::byte> bestIconImage(std::span<const std::byte> file, int width,
                                         int height) noexcept;

} // namespace percussomatic
