// SPDX-License-Identifier: MIT
#include "graphics/icon_directory.h"
#include "support/wave_builder.h"

#include <gtest/gtest.h>

namespace percussomatic {
namespace {

struct Entry {
    std::uint32_t width, height;        // as stored, 0 for 256
    std::uint32_t bytes = 1, image = 0; // of the image: size, and offset from the directory's end
};

// Returns the first byte of the best image, -1 if there is none. The images are the bytes 0 to 7.
int bestImage(int side, const std::vector<Entry>& entries) {
    const auto count = static_cast<std::uint16_t>(entries.size());
    Bytes file = toBytes(std::vector<std::uint16_t>{0, 1, count});
    const auto append = [&file](const Bytes& bytes) {
        file.insert(file.end(), bytes.begin(), bytes.end());
    };
    for (const Entry& entry : entries) {
        append(toBytes(std::vector<std::uint32_t>{entry.width | entry.height << 8, 0, entry.bytes,
                                                  6U + 16U * count + entry.image}));
    }
    append(toBytes(std::vector<std::uint8_t>{0, 1, 2, 3, 4, 5, 6, 7}));
    const auto best = bestIconImage(file, side, side);
    return best.empty() ? -1 : std::to_integer<int>(best.front());
}

TEST(IconDirectory, NearestSizeWinsAndTheFirstOnTies) {
    EXPECT_EQ(bestImage(20, {{24, 24, 1, 0}, {16, 16, 1, 1}}), 0) << "tie";
    EXPECT_EQ(bestImage(16, {{16, 48, 1, 0}, {28, 28, 1, 1}}), 1) << "both sides count";
    EXPECT_EQ(bestImage(200, {{64, 64, 1, 0}, {0, 0, 1, 1}}), 1) << "0 means 256";
}

TEST(IconDirectory, ImagesOutsideTheFileAreSkipped) {
    const Entry other{32, 32, 1, 1};
    EXPECT_EQ(bestImage(16, {{16, 16, 0, 0}, other}), 1) << "empty";
    EXPECT_EQ(bestImage(16, {{16, 16, 1, 8}, other}), 1) << "begins at the end";
    EXPECT_EQ(bestImage(16, {{16, 16, 9, 0}, other}), 1) << "one byte too long";
    EXPECT_EQ(bestImage(16, {{16, 16, 8, 0}, other}), 0) << "ends at the end";
    EXPECT_EQ(bestImage(16, {{16, 16, 0xFFFFFFFF, 1}, other}), 1) << "no 32-bit overflow";
    EXPECT_EQ(bestImage(16, {{16, 16, 0, 0}}), -1) << "no image left";
}

} // namespace
} // namespace percussomatic
