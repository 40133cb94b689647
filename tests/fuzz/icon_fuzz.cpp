// SPDX-License-Identifier: MIT
// Input: the requested width and height, then an icon file.
#include "fuzz/fuzzing.h"
#include "graphics/icon_directory.h"

#include <functional>

using namespace percussomatic;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const int width = input.word(), height = input.word();
    const auto file = input.rest();
    const auto image = bestIconImage(file, width, height);
    const std::less_equal<> notAfter; // defined for unrelated pointers, too
    fuzz::require(image.empty() ||
                      (notAfter(file.data(), image.data()) &&
                       notAfter(image.data() + image.size(), file.data() + file.size())),
                  "the image lies within the file");
    return 0;
}
