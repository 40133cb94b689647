// SPDX-License-Identifier: MIT
#include "assets/assets.h"

#include "graphics/icon_directory.h"
#include "panel/control_geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string>

namespace percussomatic {
namespace {

using Bytes = std::span<const std::byte>;

template <typename Value>
Value read(Bytes bytes, std::size_t offset) { // little-endian
    Value value{};
    std::memcpy(&value, bytes.subspan(offset, sizeof value).data(), sizeof value);
    return value;
}

std::uint32_t bigEndian(Bytes bytes, std::size_t offset) {
    return __builtin_bswap32(read<std::uint32_t>(bytes, offset));
}

// Checks for a complete 8-bit RGBA PNG of this size with pixel chunks only. A gamma or profile
// chunk changes colours on some systems; a date chunk makes builds differ.
void expectPicture(Bytes png, const Size& size) {
    ASSERT_GT(png.size(), 33u);
    EXPECT_EQ(std::memcmp(png.data(), "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16), 0);
    EXPECT_EQ(bigEndian(png, 16), size.width);
    EXPECT_EQ(bigEndian(png, 20), size.height);
    EXPECT_EQ(read<std::uint16_t>(png, 24), 0x0608) << "bit depth 8, colour type 6";
    std::size_t offset = 33;
    while (offset + 12 < png.size()) {
        ASSERT_EQ(std::memcmp(&png[offset + 4], "IDAT", 4), 0);
        offset += 12u + bigEndian(png, offset);
    }
    ASSERT_EQ(offset + 12, png.size());
    EXPECT_EQ(std::memcmp(&png[offset + 4], "IEND", 4), 0);
}

TEST(Assets, TableIsSortedByUpperCaseNameAndLookUpsAreExact) {
    EXPECT_EQ(assetTable().size(), 29u);
    std::string last;
    for (const AssetRow& row : assetTable()) {
        SCOPED_TRACE(row.name);
        std::string name = row.name;
        std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
        EXPECT_LT(last, name);
        last = name;
        EXPECT_GT(row.end, row.begin);
        EXPECT_EQ(findAsset(row.name).bytes, row.begin);
        EXPECT_EQ(findAsset(row.name).span().end().base(), row.end);
    }
    for (const char* name : {"BIN_onPNG.png", "mobile.PN", "mobile.PNG ", ""}) {
        EXPECT_EQ(findAsset(name).bytes, nullptr) << name;
    }
}

// A picture of another size or pixel format would be drawn stretched or without transparency.
TEST(Assets, PicturesHaveTheSizeOfEveryControlThatShowsThem) {
    expectPicture(findAsset("BIN_onPNG.PNG").span(), {166, 166});
    expectPicture(findAsset("pounch.PNG").span(), {883, 2540});
    expectPicture(findAsset("hole.PNG").span(), {56, 56});
    for (const ControlRow& row : controlRows()) {
        SCOPED_TRACE(row.name);
        for (const std::string_view image : {row.image, row.imageOn}) {
            if (!image.empty()) {
                expectPicture(findAsset(image).span(), {row.width, row.height});
            }
        }
        for (const int most : {0, 1, 2, 9}) {
            const auto& [file, halvings] = findPicture(row.image, most);
            EXPECT_EQ(halvings, row.width > 1000 ? std::min(most, 2) : 0);
            const int up = (1 << halvings) - 1; // a half is rounded up
            EXPECT_EQ(bigEndian(file.span(), 16), (row.width + up) >> halvings);
            EXPECT_EQ(bigEndian(file.span(), 20), (row.height + up) >> halvings);
        }
    }
}

// The system would stretch another size in place of a missing one.
TEST(Assets, IconHasAllSevenSizes) {
    const Bytes icon = findAsset("AppIcon.ico").span();
    expectPicture(bestIconImage(icon, 256, 256), {256, 256});
    for (const int side : {16, 20, 24, 32, 48, 64}) {
        SCOPED_TRACE(side);
        const Bytes image = bestIconImage(icon, side, side);
        ASSERT_EQ(image.size(), 40 + 4 * side * side + (side + 31) / 32 * 4 * side);
        EXPECT_EQ(read<std::int32_t>(image, 4), side);
        EXPECT_EQ(read<std::int32_t>(image, 8), 2 * side) << "height of pixels and mask";
        EXPECT_EQ(read<std::uint16_t>(image, 14), 32) << "bits per pixel";
    }
}

} // namespace
} // namespace percussomatic
