// SPDX-License-Identifier: MIT
// Input: the text of the file that stores the panel's size.
#include "fuzz/fuzzing.h"
#include "panel/layout_scale.h"

#include <cmath>
#include <fstream>

using namespace percussomatic;
using fuzz::require;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::ofstream(kLayoutScaleFile, std::ios::binary) << fuzz::textOf(data, size);
    const double scale = readLayoutScale(kLayoutScaleFile);
    require(scale >= 0.25 && scale <= 1.0, "the scale is in range");
    writeLayoutScale(kLayoutScaleFile, scale);
    require(std::abs(readLayoutScale(kLayoutScaleFile) - scale) <= 0.0005 + 1e-9,
            "a written scale is read back");
    const Size window = initialWindowSize(1920, 1080, scale);
    require(window.width >= 120 && window.width <= 1920 && window.height >= 90 &&
                window.height <= 1080,
            "the window fits the screen");
    return 0;
}
