// SPDX-License-Identifier: MIT
#include "panel/display_scale.h"

namespace percussomatic {

int& displayDpi() noexcept {
    static int dpi = kDesignDpi;
    return dpi;
}

int scaledForDpi(int designPixels) noexcept {
    return (designPixels * displayDpi() + kDesignDpi / 2) / kDesignDpi;
}

float scaledForDpi(float designPixels) noexcept {
    return designPixels * static_cast<float>(displayDpi()) / static_cast<float>(kDesignDpi);
}

} // namespace percussomatic
