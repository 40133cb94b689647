// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"
#include "panel/control_table.h"

#include <cstdint>

namespace percussomatic {

// Where controls lie in the client area. Points and rectangles are client pixels, a scale is client
// pixels per layout unit. GUI thread.

// Right and lower edge of all visible rows in layout units; 1000 or 600 where that is below 1.
Size layoutSize(std::span<const ControlRow> rows = controlRows()) noexcept;

// 1.0 for an empty client area.
double viewScale(Size client) noexcept;

// The rectangle that shows a control, moved by its slider offset or by the given one.
PixelRect controlClientRect(int index, double scale) noexcept;
PixelRect controlClientRect(int index, double scale, std::uint32_t sliderOffset) noexcept;

// A control's redraws reach this much further on every side: scaled pictures bleed over the edge.
inline constexpr int kRedrawMargin = 2;

// Client point in whole layout units, truncated.
PixelPoint layoutPoint(PixelPoint client, double scale) noexcept;

// Layout form of the hit test: the client point truncated to layout units lies in the control's
// rectangle, moved by its slider offset. Nothing is hit at a scale of 0 or less.
bool hitsControl(int index, PixelPoint client, double scale) noexcept;

// Pixel form of the hit test: the point lies in the pixels that show the control.
bool showsControlAt(int index, PixelPoint client, double scale) noexcept;

// Topmost visible control that the layout form hits and `accept(index)` takes, or kNoControl.
template <typename Accept>
int topControlAt(PixelPoint client, double scale, Accept accept) {
    for (int index = kControlCount - 1; index >= 0; --index) {
        if (accept(index) && hitsControl(index, client, scale)) {
            return index;
        }
    }
    return kNoControl;
}

int topControlAt(PixelPoint client, double scale, ControlKind kind) noexcept;

} // namespace percussomatic
