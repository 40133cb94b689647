// SPDX-License-Identifier: MIT
#include "panel/control_geometry.h"

#include "panel/control_state.h"

#include <algorithm>

namespace percussomatic {

Size layoutSize(std::span<const ControlRow> rows) noexcept {
    Size size;
    for (const ControlRow& row : rows) {
        if (row.visible == 0) {
            continue;
        }
        size.width = std::max(size.width, row.x + row.width);
        size.height = std::max(size.height, row.y + row.height);
    }
    if (size.width < 1) {
        size.width = 1000;
    }
    if (size.height < 1) {
        size.height = 600;
    }
    return size;
}

double viewScale(Size client) noexcept {
    static const Size size = layoutSize(); // the table never changes
    const double scale = std::min(static_cast<double>(client.width) / size.width,
                                  static_cast<double>(client.height) / size.height);
    return scale > 0.0 ? scale : 1.0;
}

PixelRect controlClientRect(int index, double scale) noexcept {
    return controlClientRect(index, scale, controlState().offset(index));
}

PixelRect controlClientRect(int index, double scale, std::uint32_t sliderOffset) noexcept {
    const ControlRow& row = controlRow(index);
    const int x = row.x + static_cast<int>(sliderOffset);
    return {static_cast<int>(x * scale), static_cast<int>(row.y * scale),
            static_cast<int>((x + row.width) * scale + 1.0),
            static_cast<int>((row.y + row.height) * scale + 1.0)};
}

PixelPoint layoutPoint(PixelPoint client, double scale) noexcept {
    return {static_cast<int>(client.x / scale), static_cast<int>(client.y / scale)};
}

bool hitsControl(int index, PixelPoint client, double scale) noexcept {
    const ControlRow& row = controlRow(index);
    if (!(scale > 0.0) || row.visible == 0) {
        return false;
    }
    const int left = row.x + static_cast<int>(controlState().offset(index));
    return contains({left, row.y, left + row.width, row.y + row.height},
                    layoutPoint(client, scale));
}

bool showsControlAt(int index, PixelPoint client, double scale) noexcept {
    return controlRow(index).visible != 0 && contains(controlClientRect(index, scale), client);
}

int topControlAt(PixelPoint client, double scale, ControlKind kind) noexcept {
    return topControlAt(client, scale, [kind](int index) { return controlKind(index) == kind; });
}

} // namespace percussomatic
