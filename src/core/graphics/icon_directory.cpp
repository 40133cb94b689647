// SPDX-License-Identifier: MIT
#include "graphics/icon_directory.h"

#include <cstdint>
#include <cstdlib>

namespace percussomatic {

namespace {

constexpr std::size_t kHeaderBytes = 6, kEntryBytes = 16;

std::uint32_t littleEndian(std::span<const std::byte> file, std::size_t at,
                           std::size_t bytes) noexcept {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < bytes; ++i) {
        value |= std::to_integer<std::uint32_t>(file[at + i]) << (8 * i);
    }
    return value;
}

} // namespace

std::span<const std::byte> bestIconImage(std::span<const std::byte> file, int width,
                                         int height) noexcept {
    if (file.size() < kHeaderBytes || littleEndian(file, 0, 2) != 0 ||
        littleEndian(file, 2, 2) != 1) {
        return {};
    }
    const std::size_t count = littleEndian(file, 4, 2);
    if (count == 0 || kHeaderBytes + kEntryBytes * count > file.size()) {
        return {};
    }

    std::span<const std::byte> best;
    int bestScore = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = kHeaderBytes + kEntryBytes * i;
        const auto side = [&](std::size_t at) { // 0 means 256
            const int value = std::to_integer<int>(file[at]);
            return value == 0 ? 256 : value;
        };
        const std::size_t bytes = littleEndian(file, entry + 8, 4);
        const std::size_t offset = littleEndian(file, entry + 12, 4);
        if (offset >= file.size() || bytes == 0 || offset + bytes > file.size()) {
            continue;
        }
        const int score = std::abs(width - side(entry)) + std::abs(height - side(entry + 1));
        if (best.empty() || score < bestScore) {
            best = file.subspan(offset, bytes);
            bestScore = score;
        }
    }
    return best;
}

} // namespace percussomatic
