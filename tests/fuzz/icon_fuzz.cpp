#include "fuzz/fuzzing.h"
#include "graphics/icon_directory.h"

#include <functional>

// A wanted size, then an icon file.

using namespace percussomatic;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const int width = input.word(), height = input.word();
    const auto file = input.rest();
    const auto image = bestIconImage(file, width, height);
    if (!image.empty()) {
        const std::less_equal<> notAfter; // of addresses, whatever they point into
        fuzz::require(notAfter(file.data(), image.data()) &&
                          notAfter(image.data() + image.size(), file.data() + file.size()),
                      "the image lies in the file");
    }
    return 0;
}
