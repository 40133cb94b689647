// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

// The format of the recording that the fake winmm.dll makes. Each waveOutWrite appends this header
// and the frames, signed 16-bit stereo. An entry without frames marks an opening of the device.
namespace listen {

struct BlockHeader {
    std::int64_t writtenNs = 0; // performance counter at waveOutWrite
    std::int64_t startsNs = 0;  // when its first frame is played
    std::int64_t frames = 0;
};

constexpr std::size_t kFrameBytes = 4;

} // namespace listen
