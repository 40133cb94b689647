// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

namespace percussomatic {

// Rectangles, points and sizes in whole pixels, or in layout units where a function says so.

// Right and bottom are exclusive.
struct PixelRect {
    int left = 0, top = 0, right = 0, bottom = 0;

    constexpr int width() const noexcept { return right - left; }
    constexpr int height() const noexcept { return bottom - top; }
    bool operator==(const PixelRect&) const = default;
};

struct PixelPoint {
    int x = 0, y = 0;

    bool operator==(const PixelPoint&) const = default;
};

struct Size {
    int width = 0, height = 0;

    bool operator==(const Size&) const = default;
};

constexpr PixelRect inflated(const PixelRect& rect, int margin) noexcept {
    return {rect.left - margin, rect.top - margin, rect.right + margin, rect.bottom + margin};
}

// 0 x 0 at the origin if they have no pixel in common.
constexpr PixelRect intersected(const PixelRect& a, const PixelRect& b) noexcept {
    const PixelRect both{std::max(a.left, b.left), std::max(a.top, b.top),
                         std::min(a.right, b.right), std::min(a.bottom, b.bottom)};
    return both.width() > 0 && both.height() > 0 ? both : PixelRect{};
}

// The smallest rectangle that contains both.
constexpr PixelRect united(const PixelRect& a, const PixelRect& b) noexcept {
    return {std::min(a.left, b.left), std::min(a.top, b.top), std::max(a.right, b.right),
            std::max(a.bottom, b.bottom)};
}

constexpr bool overlap(const PixelRect& a, const PixelRect& b) noexcept {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

constexpr bool contains(const PixelRect& rect, PixelPoint point) noexcept {
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
           point.y < rect.bottom;
}

} // namespace percussomatic
