#include "assets/assets.h"

#include "graphics/icon_directory.h"
#include "panel/control_geometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <utility>

namespace percussomatic {
namespace {

using Bytes = std::span<const std::byte>;
using PixelSize = std::pair<std::int64_t, std::int64_t>; // width, height

std::uint32_t littleEndian(Bytes bytes, std::size_t offset, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;) {
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[offset + i]);
    }
    return value;
}

std::uint32_t bigEndian(Bytes bytes, std::size_t offset) {
    const std::uint32_t value = littleEndian(bytes, offset, 4);
    return value << 24 | (value & 0xFF00) << 8 | (value >> 8 & 0xFF00) | value >> 24;
}

// The picture is an 8-bit RGBA PNG of this size, whole to its last byte. Chunks other than pixels
// are refused: a gamma or profile chunk changes colours on some systems, a date makes the same
// sources give other bytes.
void expectPicture(Bytes png, PixelSize size) {
    ASSERT_GT(png.size(), 33u);
    EXPECT_EQ(std::memcmp(png.data(), "\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16), 0);
    EXPECT_EQ(PixelSize(bigEndian(png, 16), bigEndian(png, 20)), size);
    EXPECT_EQ(littleEndian(png, 24, 2), 0x0608u) << "bit depth 8, colour type 6";
    std::size_t offset = 33;
    while (offset + 12 < png.size()) {
        ASSERT_EQ(std::memcmp(&png[offset + 4], "IDAT", 4), 0);
        offset += 12u + bigEndian(png, offset);
    }
    ASSERT_EQ(offset + 12, png.size());
    EXPECT_EQ(std::memcmp(&png[offset + 4], "IEND", 4), 0);
}

TEST(Assets, TableIsSortedByUpperCasedNameAndLookUpsAreExact) {
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

// A picture of another size or pixel format would still be drawn, but stretched, without its
// transparency or with a hole in the panel.
TEST(Assets, PicturesHaveTheSizeOfEveryControlThatShowsThem) {
    // The lit beat lamp, the card and its hole are shown by rules of their own.
    expectPicture(findAsset("BIN_onPNG.PNG").span(), {166, 166});
    expectPicture(findAsset("pounch.PNG").span(), {883, 2540});
    expectPicture(findAsset("hole.PNG").span(), {56, 56});
    for (const ControlRow& row : controlRows()) {
        SCOPED_TRACE(row.name);
        expectPicture(findAsset(row.image).span(), {row.width, row.height});
        if (!row.imageOn.empty()) {
            expectPicture(findAsset(row.imageOn).span(), {row.width, row.height});
        }
    }
}

// A size that is missing makes the system stretch another one.
TEST(Assets, IconHasItsSevenSizesWhole) {
    const Bytes icon = findAsset("AppIcon.ico").span();
    expectPicture(bestIconImage(icon, 256, 256), {256, 256});
    for (const std::uint32_t side : {16u, 20u, 24u, 32u, 48u, 64u}) {
        SCOPED_TRACE(side);
        const Bytes image = bestIconImage(icon, static_cast<int>(side), static_cast<int>(side));
        ASSERT_EQ(image.size(), 40 + 4 * side * side + (side + 31) / 32 * 4 * side);
        EXPECT_EQ(littleEndian(image, 4, 4), side);
        EXPECT_EQ(littleEndian(image, 8, 4), 2 * side) << "and mask";
        EXPECT_EQ(littleEndian(image, 14, 2), 32u) << "bits per pixel";
    }
}

} // namespace
} // namespace percussomatic
