#include "ui/icon_directory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace percussomatic {
namespace {

struct Entry {
    int width, height;            // as stored, 0 for 256
    std::uint32_t bytes = 1;      // of the image
    std::uint32_t pastHeader = 0; // where it begins, behind the directory
};

constexpr std::size_t kImages = 8;

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
    constexpr std::uint32_t kTooLong = kImages + 1;
    const struct {
        const char* what;
        std::vector<Entry> entries;
        int width, height;
        int image; // -1 for none
    } cases[] = {
        {"tie", {{24, 24, 1, 0}, {16, 16, 1, 1}}, 20, 20, 0},
        {"both sides count", {{16, 48, 1, 0}, {28, 28, 1, 1}}, 16, 16, 1},
        {"0 is 256", {{64, 64, 1, 0}, {0, 0, 1, 1}}, 200, 200, 1},
        {"an empty image is skipped", {{16, 16, 0, 0}, {32, 32, 1, 1}}, 16, 16, 1},
        {"one past the end is skipped", {{16, 16, 1, kImages}, {32, 32, 1, 1}}, 16, 16, 1},
        {"one too long is skipped", {{16, 16, kTooLong, 0}, {32, 32, 1, 1}}, 16, 16, 1},
        {"one as long as the file is not", {{16, 16, kImages, 0}, {32, 32, 1, 1}}, 16, 16, 0},
        {"no 32-bit overflow", {{16, 16, 0xFFFFFFFF, 1}, {32, 32, 1, 1}}, 16, 16, 1},
        {"nothing left", {{16, 16, 0, 0}}, 16, 16, -1},
    };
    for (const auto& [what, entries, width, height, image] : cases) {
        const std::vector<std::byte> file = icon(entries);
        const std::span<const std::byte> best = bestIconImage(file, width, height);
        EXPECT_EQ(best.empty() ? -1 : std::to_integer<int>(best.front()), image) << what;
    }
}

TEST(IconDirectory, DamagedFilesAreNoIcon) {
    const std::vector<std::byte> good = icon({{16, 16}, {32, 32}});
    ASSERT_FALSE(bestIconImage(good, 16, 16).empty());
    // Cut off inside its directory; a copy of that size, so that reading on would be seen.
    for (std::size_t size = 0; size < 6 + 2 * 16; ++size) {
        const std::vector<std::byte> cut(good.begin(),
                                         good.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_TRUE(bestIconImage(cut, 16, 16).empty()) << size << " bytes";
    }
}

} // namespace
} // namespace percussomatic
