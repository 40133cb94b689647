#include "graphics/icon_directory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace percussomatic {
namespace {

struct Entry {
    int width, height;            // as stored, 0 for 256
    std::uint32_t bytes = 1;      // of the image
    std::uint32_t pastHeader = 0; // where it begins, behind the directory
};

constexpr std::uint32_t kImages = 8;

// A directory followed by the bytes 0, 1, .. 7 to stand for the images.
std::vector<std::byte> icon(const std::vector<Entry>& entries) {
    std::vector<std::byte> file;
    const auto append = [&file](std::uint64_t value, int bytes) {
        for (int i = 0; i < bytes; ++i) {
            file.push_back(static_cast<std::byte>(value >> (8 * i)));
        }
    };
    const auto count = static_cast<std::uint32_t>(entries.size());
    append(1 << 16, 4);
    append(count, 2);
    for (const Entry& entry : entries) {
        append(static_cast<std::uint32_t>(entry.width), 1);
        append(static_cast<std::uint32_t>(entry.height), 1);
        append(0, 6);
        append(entry.bytes, 4);
        append(6 + 16 * count + entry.pastHeader, 4);
    }
    for (std::uint32_t image = 0; image < kImages; ++image) {
        append(image, 1);
    }
    return file;
}

TEST(IconDirectory, NearestSizeWinsAndTheFirstOnTies) {
    const auto imageFor = [](int side, const std::vector<Entry>& entries) {
        const std::vector<std::byte> file = icon(entries);
        const auto best = bestIconImage(file, side, side);
        return best.empty() ? -1 : std::to_integer<int>(best.front());
    };
    const Entry other{32, 32, 1, 1};
    EXPECT_EQ(imageFor(20, {{24, 24, 1, 0}, {16, 16, 1, 1}}), 0) << "tie";
    EXPECT_EQ(imageFor(16, {{16, 48, 1, 0}, {28, 28, 1, 1}}), 1) << "both sides count";
    EXPECT_EQ(imageFor(200, {{64, 64, 1, 0}, {0, 0, 1, 1}}), 1) << "0 is 256";
    EXPECT_EQ(imageFor(16, {{16, 16, 0, 0}, other}), 1) << "empty";
    EXPECT_EQ(imageFor(16, {{16, 16, 1, kImages}, other}), 1) << "past the end";
    EXPECT_EQ(imageFor(16, {{16, 16, kImages + 1, 0}, other}), 1) << "one too long";
    EXPECT_EQ(imageFor(16, {{16, 16, kImages, 0}, other}), 0) << "as long as the file";
    EXPECT_EQ(imageFor(16, {{16, 16, 0xFFFFFFFF, 1}, other}), 1) << "no 32-bit overflow";
    EXPECT_EQ(imageFor(16, {{16, 16, 0, 0}}), -1) << "nothing left";
}

} // namespace
} // namespace percussomatic
