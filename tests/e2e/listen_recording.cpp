#include "listen_recording.h"

#include <array>
#include <cstring>
#include <fstream>

namespace listen {

std::optional<std::vector<Block>> readRecording(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    constexpr std::uint32_t kMostFrames = 1U << 20;
    std::vector<Block> blocks;
    std::array<char, kBlockHeadBytes> packed{};
    while (file.read(packed.data(), packed.size())) {
        Block block;
        std::memcpy(&block.head.handedNs, packed.data(), sizeof(block.head.handedNs));
        std::memcpy(&block.head.startsNs, packed.data() + 8, sizeof(block.head.startsNs));
        std::memcpy(&block.head.frames, packed.data() + 16, sizeof(block.head.frames));
        if (block.head.frames > kMostFrames) {
            return std::nullopt;
        }
        block.samples.resize(std::size_t{block.head.frames} * 2);
        const auto bytes = static_cast<std::streamsize>(block.head.frames * kFrameBytes);
        if (!file.read(reinterpret_cast<char*>(block.samples.data()), bytes)) {
            break;
        }
        blocks.push_back(std::move(block));
    }
    return blocks;
}

} // namespace listen
