// The embedded pictures against the control table: a picture of another size or pixel format would
// still be drawn, but stretched, without its transparency or with a hole in the panel.

#include "ui/assets.h"
#include "ui/control_layout.h"
#include "ui/icon_directory.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
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

TEST(Artwork, PicturesHaveTheSizeOfEveryControlThatShowsThem) {
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
TEST(Artwork, IconHasItsSevenSizesWhole) {
    const Bytes icon = findAsset("AppIcon.ico").span();
    for (const int side : {16, 20, 24, 32, 48, 64, 256}) {
        SCOPED_TRACE(side);
        const Bytes image = bestIconImage(icon, side, side);
        if (side == 256) {
            expectPicture(image, {side, side});
            continue;
        }
        const auto maskBytes = static_cast<std::size_t>((side + 31) / 32 * 4 * side);
        ASSERT_EQ(image.size(), 40u + 4 * static_cast<std::size_t>(side * side) + maskBytes);
        EXPECT_EQ(littleEndian(image, 4, 4), static_cast<std::uint32_t>(side));
        EXPECT_EQ(littleEndian(image, 8, 4), static_cast<std::uint32_t>(2 * side)) << "and mask";
        EXPECT_EQ(littleEndian(image, 14, 2), 32u) << "bits per pixel";
    }
}

} // namespace
} // namespace percussomatic
