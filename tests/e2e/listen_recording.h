#pragma once

#include <cstddef>
#include <cstdint>

// What the stand-in for winmm.dll writes down per waveOutWrite: this head, then the frames, signed
// 16-bit, left and right. An entry without frames says that the device was opened.
namespace listen {

struct BlockHead {
    std::int64_t handedNs = 0; // performance counter when the program wrote the block
    std::int64_t startsNs = 0; // when its first frame is played
    std::int64_t frames = 0;
};

constexpr std::size_t kFrameBytes = 4;

} // namespace listen
