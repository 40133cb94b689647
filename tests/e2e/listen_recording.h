#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

// What the stand-in for winmm.dll writes down, one entry per waveOutWrite.
namespace listen {

// In the file this is packed to 20 bytes, little-endian, and followed by the frames: signed 16-bit,
// left and right. An entry without frames says that the device was opened.
struct BlockHead {
    std::int64_t handedNs = 0; // performance counter when the program wrote the block
    std::int64_t startsNs = 0; // when its first frame is played
    std::uint32_t frames = 0;
};

constexpr std::size_t kBlockHeadBytes = 20;
constexpr std::size_t kFrameBytes = 4;

struct Block {
    BlockHead head;
    std::vector<std::int16_t> samples;
};

// All whole entries: the last one may be cut off when the program was killed. Nothing without a
// file.
std::optional<std::vector<Block>> readRecording(const std::filesystem::path& path);

} // namespace listen
