#include "ui/assets.h"

// embedded_files.S holds the bytes, embedded_files.inc one EMBEDDED_FILE(name, symbol) line per
// file.
extern "C" {
#define EMBEDDED_FILE(name, symbol) extern const std::byte symbol[], symbol##_end[];
#include "embedded_files.inc"
#undef EMBEDDED_FILE
}

namespace percussomatic {

namespace {

constexpr AssetRow kAssets[] = {
#define EMBEDDED_FILE(name, symbol) {name, symbol, symbol##_end},
#include "embedded_files.inc"
#undef EMBEDDED_FILE
};
static_assert(std::size(kAssets) == 29);

} // namespace

std::span<const AssetRow> assetTable() noexcept {
    return kAssets;
}

AssetBytes findAsset(std::string_view name) noexcept {
    for (const AssetRow& row : kAssets) {
        if (name == row.name) {
            return {row.begin, static_cast<std::uint32_t>(row.end - row.begin)};
        }
    }
    return {};
}

} // namespace percussomatic
