// SPDX-License-Identifier: MIT
#pragma once

#include "graphics/pixel_rect.h"
#include "panel/control_table.h"

#include <cstdint>

namespace percussomatic {

// Positions of controls in the client area, and hit tests. Points and rectangles are in client
// pixels; a scale is client pixels per layout unit. GUI thread.

// Right and bottom edge of all visible rows in layout units. A width below 1 becomes 1000, a height
// below 1 becomes 600.
Size layoutSize(std::span<const ControlRow> rows = controlRows()) noexcept;

// The scale at which the whole panel fits the client area; 1.0 if that is empty.
double viewScale(Size client) noexcept;

// The rectangle in which a control is drawn, shifted by its current slider offset or the given one.
PixelRect controlClientRect(int index, double scale) noexcept;
PixelRect controlClientRect(int index, double scale, std::uint32_t sliderOffset) noexcept;

// Redraw areas of controls are larger by this on every side: scaled pictures bleed over their edge.
inline constexpr int kRedrawMargin = 2;

// Converts a client point to whole layout units, truncated.
PixelPoint layoutPoint(PixelPoint client, double scale) noexcept;

// Hit test in layout units: whether the client point, truncated to layout units, lies in the
// control's rectangle, shifted by its slider offset. False if the scale is not positive.
bool hitsControl(int index, PixelPoint client, double scale) noexcept;

// Hit test in pixels: whether the point lies in the rectangle in which the control is drawn.
bool showsControlAt(int index, PixelPoint client, double scale) noexcept;

// Topmost visible control for which hitsControl() and accept(index) are true, or kNoControl.
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
