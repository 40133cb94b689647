// SPDX-License-Identifier: MIT
#include "panel/display_scale.h"

#include <algorithm>

namespace percussomatic {

int& displayDpi() noexcept {
    static int dpi = kDesignDpi;
    return dpi;
}

int scaledForDpi(int designPixels, int dpi) noexcept {
    return (designPixels * dpi + kDesignDpi / 2) / kDesignDpi;
}

float scaledForDpi(float designPixels, int dpi) noexcept {
    return designPixels * static_cast<float>(dpi) / static_cast<float>(kDesignDpi);
}

Size outerSize(const WindowDesign& design, Size frame, int dpi) noexcept {
    const auto side = [dpi](int outer, int content, int framePixels) {
        return std::max(scaledForDpi(outer, dpi), scaledForDpi(content, dpi) + framePixels);
    };
    return {side(design.outer.width, design.content.width, frame.width),
            side(design.outer.height, design.content.height, frame.height)};
}

int dpiThatFits(const WindowDesign& design, Size frame, Size room) noexcept {
    constexpr int kMinDpi = 48;
    const auto fits = [&](int dpi) {
        const Size size = outerSize(design, frame, dpi);
        return size.width <= room.width && size.height <= room.height;
    };
    int dpi = displayDpi();
    while (dpi > kMinDpi && !fits(dpi)) {
        --dpi;
    }
    return dpi;
}

} // namespace percussomatic
