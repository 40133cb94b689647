// SPDX-License-Identifier: MIT
#include "panel/display_scale.h"

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

} // namespace percussomatic
