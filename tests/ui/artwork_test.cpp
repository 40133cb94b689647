// The embedded pictures against the control table: a picture of another size or pixel format would
// still be drawn, but stretched, without its transparency or with a hole in the panel.

#include "ui/assets.h"
#include "ui/control_layout.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace percussomatic {
namespace {

using Bytes = std::span<const std::byte>;
using PixelSize = std::pair<std::int64_t, std::int64_t>; // width, height
using Picture = std::pair<std::string, PixelSize>;       // by asset name

std::uint32_t littleEndian(Bytes bytes, std::size_t offset, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = count; i-- > 0;) {
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[offset + i]);
    }
    return value;
}

std::uint32_t bigEndian(Bytes bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        value = value << 8 | std::to_integer<std::uint32_t>(bytes[offset + i]);
    }
    return value;
}

// The picture is an 8-bit RGBA PNG of this size, whole to its last byte. Chunks other than pixels
// are refused: a gamma or profile chunk changes colours on some systems, a date makes the same
// sources give other bytes.
void expectPicture(Bytes png, PixelSize size) {
    ASSERT_GT(png.size(), 33u);
    ASSERT_EQ(std::memcmp(png.data(), "\x89PNG\r\n\x1a\n", 8), 0);
    std::string chunks;
    std::uint64_t offset = 8;
    while (offset + 12 <= png.size()) {
        const char* type = reinterpret_cast<const char*>(png.data() + offset + 4);
        if (!chunks.ends_with(std::string(type, 4))) {
            chunks.append(type, 4);
        }
        offset += 12ull + bigEndian(png, offset);
    }
    EXPECT_EQ(offset, png.size());
    ASSERT_EQ(chunks, "IHDRIDATIEND");
    EXPECT_EQ(PixelSize(bigEndian(png, 16), bigEndian(png, 20)), size);
    EXPECT_EQ(std::to_integer<int>(png[24]), 8) << "bit depth";
    EXPECT_EQ(std::to_integer<int>(png[25]), 6) << "colour type";
}

// Every picture with every size it is shown at. The lit beat lamp, the card and its hole are shown
// by rules of their own and appear in no row.
std::set<Picture> shownPictures() {
    std::set<Picture> shown = {
        {"BIN_onPNG.PNG", {166, 166}}, {"pounch.PNG", {883, 2540}}, {"hole.PNG", {56, 56}}};
    for (const ControlRow& row : controlRows()) {
        for (const std::string_view image : {row.image, row.imageOn}) {
            if (!image.empty()) {
                shown.emplace(image, PixelSize{row.width, row.height});
            }
        }
    }
    return shown;
}

TEST(Artwork, PicturesHaveTheSizeOfEveryControlThatShowsThem) {
    for (const auto& [name, size] : shownPictures()) {
        SCOPED_TRACE(name);
        expectPicture(findAsset(name).span(), size);
    }
}

TEST(Artwork, AllFilesTogetherStayUnderSixMegabytes) {
    std::map<std::string, std::uint64_t> files = {{"AppIcon.ico", findAsset("AppIcon.ico").size}};
    for (const auto& [name, size] : shownPictures()) {
        files[name] = findAsset(name).size;
    }
    EXPECT_EQ(files.size(), 17u);
    std::uint64_t total = 0;
    for (const auto& [name, bytes] : files) {
        total += bytes;
    }
    EXPECT_LT(total, 6'000'000u);
}

// A size that is missing makes the system stretch another one; an entry that reaches past the end
// is skipped, and one whose image has another size than the directory says comes out blurred.
TEST(Artwork, IconHasItsSevenSizesWhole) {
    constexpr std::size_t kDirectoryBytes = 6, kEntryBytes = 16;
    constexpr std::uint32_t kSizes[] = {16, 20, 24, 32, 48, 64, 256};
    const Bytes icon = findAsset("AppIcon.ico").span();
    ASSERT_GE(icon.size(), kDirectoryBytes + std::size(kSizes) * kEntryBytes);
    EXPECT_EQ(littleEndian(icon, 0, 2), 0u);
    EXPECT_EQ(littleEndian(icon, 2, 2), 1u);
    ASSERT_EQ(littleEndian(icon, 4, 2), std::size(kSizes));

    // The images follow the directory without gap or overlap.
    std::uint64_t end = kDirectoryBytes + std::size(kSizes) * kEntryBytes;
    for (std::size_t i = 0; i < std::size(kSizes); ++i) {
        const std::uint32_t side = kSizes[i];
        SCOPED_TRACE(side);
        const Bytes entry = icon.subspan(kDirectoryBytes + i * kEntryBytes, kEntryBytes);
        EXPECT_EQ(littleEndian(entry, 0, 1), side % 256); // 256 is written as 0
        EXPECT_EQ(littleEndian(entry, 1, 1), side % 256);
        EXPECT_EQ(littleEndian(entry, 6, 2), 32u) << "bits per pixel";
        const std::uint64_t bytes = littleEndian(entry, 8, 4);
        const std::uint64_t offset = littleEndian(entry, 12, 4);
        ASSERT_EQ(offset, end);
        end = offset + bytes;
        ASSERT_LE(end, icon.size());

        const Bytes image = icon.subspan(offset, bytes);
        if (side == 256) {
            expectPicture(image, {side, side});
            continue;
        }
        const std::uint32_t maskBytes = (side + 31) / 32 * 4 * side;
        ASSERT_EQ(bytes, 40u + 4 * side * side + maskBytes);
        EXPECT_EQ(littleEndian(image, 0, 4), 40u);
        EXPECT_EQ(littleEndian(image, 4, 4), side);
        EXPECT_EQ(littleEndian(image, 8, 4), 2 * side) << "pixels and mask";
        EXPECT_EQ(littleEndian(image, 14, 2), 32u);
    }
    EXPECT_EQ(end, icon.size());
}

} // namespace
} // namespace percussomatic
