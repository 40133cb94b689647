// SPDX-License-Identifier: MIT
#include "panel/layout_scale.h"

#include "panel/control_geometry.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace percussomatic {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// A NaN becomes 1.0, because std::min returns its first argument then.
double clampedScale(double scale) noexcept {
    return scale < 0.25 ? 0.25 : std::min(1.0, scale);
}

} // namespace

double& layoutScale() noexcept {
    static double scale = 1.0;
    return scale;
}

double readLayoutScale(const char* path) {
    double scale = 1.0;
    const File file(std::fopen(path, "r"));
    if (file == nullptr || std::fscanf(file.get(), "%lf", &scale) != 1) {
        return 1.0;
    }
    return clampedScale(scale);
}

void writeLayoutScale(const char* path, double scale) {
    const File file(std::fopen(path, "w"));
    if (file != nullptr) {
        std::fprintf(file.get(), "%.3f", scale);
    }
}

double steppedLayoutScale(double scale, double delta) noexcept {
    return clampedScale(scale + delta);
}

Size initialWindowSize(int screenWidth, int screenHeight, double layoutScale) noexcept {
    // The margin keeps the window off the screen's edges. The minimum guards against screens that
    // report implausible sizes.
    constexpr int kScreenMargin = 40, kMinWidth = 320, kMinHeight = 240;
    const Size layout = layoutSize();
    const int availableWidth = std::max(screenWidth - kScreenMargin, kMinWidth);
    const int availableHeight = std::max(screenHeight - kScreenMargin, kMinHeight);
    double fit = std::min(static_cast<double>(availableWidth) / layout.width,
                          static_cast<double>(availableHeight) / layout.height);
    fit = std::min(1.0, fit);
    if (fit <= 0.0) {
        fit = 1.0;
    }
    const double scale = layoutScale * fit;
    return {std::max(static_cast<int>(layout.width * scale + 0.5), 120),
            std::max(static_cast<int>(layout.height * scale + 0.5), 90)};
}

} // namespace percussomatic
