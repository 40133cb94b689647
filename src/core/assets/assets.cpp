// SPDX-License-Identifier: MIT
#include "assets/assets.h"

// The build generates both files: embedded_files.S contains the bytes, embedded_files.inc has one
// EMBEDDED_FILE(name, symbol) line per file and one REDUCED_PICTURE(name, halvings, symbol) line
// per smaller copy of a picture.
extern "C" {
#define EMBEDDED_FILE(name, symbol) extern const std::byte symbol[], symbol##_end[];
#define REDUCED_PICTURE(name, halvings, symbol) EMBEDDED_FILE(name, symbol)
#include "embedded_files.inc"
#undef REDUCED_PICTURE
#undef EMBEDDED_FILE
}

namespace percussomatic {

namespace {

constexpr AssetRow kAssets[] = {
#define EMBEDDED_FILE(name, symbol) {name, symbol, symbol##_end},
#define REDUCED_PICTURE(name, halvings, symbol)
#include "embedded_files.inc"
#undef REDUCED_PICTURE
#undef EMBEDDED_FILE
};
static_assert(std::size(kAssets) == 29);

struct ReducedRow {
    AssetRow row;
    int halvings;
};

constexpr ReducedRow kReduced[] = {
#define EMBEDDED_FILE(name, symbol)
#define REDUCED_PICTURE(name, halvings, symbol) {{name, symbol, symbol##_end}, halvings},
#include "embedded_files.inc"
#undef REDUCED_PICTURE
#undef EMBEDDED_FILE
};

AssetBytes bytesOf(const AssetRow& row) noexcept {
    return {row.begin, static_cast<std::uint32_t>(row.end - row.begin)};
}

} // namespace

std::span<const AssetRow> assetTable() noexcept {
    return kAssets;
}

AssetBytes findAsset(std::string_view name) noexcept {
    for (const AssetRow& row : kAssets) {
        if (name == row.name) {
            return bytesOf(row);
        }
    }
    return {};
}

PictureFile findPicture(std::string_view name, int maxHalvings) noexcept {
    PictureFile best{findAsset(name), 0};
    for (const ReducedRow& reduced : kReduced) {
        if (name == reduced.row.name && reduced.halvings <= maxHalvings &&
            reduced.halvings > best.halvings) {
            best = {bytesOf(reduced.row), reduced.halvings};
        }
    }
    return best;
}

} // namespace percussomatic
