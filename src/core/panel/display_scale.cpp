#include "panel/display_scale.h"

namespace percussomatic {

int& displayDpi() noexcept {
    static int dpi = kWrittenDpi;
    return dpi;
}

int onScreen(int writtenPixels) noexcept {
    return (writtenPixels * displayDpi() + kWrittenDpi / 2) / kWrittenDpi;
}

float onScreen(float writtenPixels) noexcept {
    return writtenPixels * static_cast<float>(displayDpi()) / static_cast<float>(kWrittenDpi);
}

} // namespace percussomatic
