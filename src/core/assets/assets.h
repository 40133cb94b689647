#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace percussomatic {

// The files compiled into the program: pictures, recordings and the icon, byte for byte as they
// would lie on disk. Read-only; any thread.
struct AssetRow {
    const char* name;
    const std::byte* begin;
    const std::byte* end;
};

// A file's bytes; {nullptr, 0} when there is no such file.
struct AssetBytes {
    const std::byte* bytes = nullptr;
    std::uint32_t size = 0;

    std::span<const std::byte> span() const noexcept { return {bytes, size}; }
};

// All 29 files, sorted by upper-cased name.
std::span<const AssetRow> assetTable() noexcept;

// Exact, case-sensitive; the first match wins.
AssetBytes findAsset(std::string_view name) noexcept;

// A picture as it is, or a copy that the build has made by halving it so many times.
struct PictureFile {
    AssetBytes file;
    int halvings = 0;
};

// The smallest copy of a picture that has been halved at most so often. Empty when there is no such
// picture.
PictureFile findPicture(std::string_view name, int mostHalvings) noexcept;

} // namespace percussomatic
