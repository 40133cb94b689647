// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace percussomatic {

// The files embedded in the program: pictures, recordings and the icon, byte for byte as on disk.
// Read-only; any thread.
struct AssetRow {
    const char* name;
    const std::byte* begin;
    const std::byte* end;
};

// The content of a file; {nullptr, 0} if there is no such file.
struct AssetBytes {
    const std::byte* bytes = nullptr;
    std::uint32_t size = 0;

    std::span<const std::byte> span() const noexcept { return {bytes, size}; }
};

// All 29 files, sorted by upper-cased name.
std::span<const AssetRow> assetTable() noexcept;

// Finds a file by its exact, case-sensitive name.
AssetBytes findAsset(std::string_view name) noexcept;

// A picture in full size, or a smaller copy that the build has made by halving it.
struct PictureFile {
    AssetBytes file;
    int halvings = 0; // number of times the copy has been halved
};

// Returns the smallest copy of a picture that has been halved at most maxHalvings times. The file
// is {nullptr, 0} if there is no such picture.
PictureFile findPicture(std::string_view name, int maxHalvings) noexcept;

} // namespace percussomatic
