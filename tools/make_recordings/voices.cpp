// SPDX-License-Identifier: MIT
#include "voices.h"

#include <array>

namespace recordings {
namespace {

constexpr std::size_t kLongFrames = 960000; // 10 s
constexpr std::size_t kShortFrames = 46500; // 0.484 s

// The high-pass lies below each voice's lowest partial. A voice sounds until its natural
// decay is below -100 dBFS, except for the bass drum, which relies on its fade-out. The
// peaks balance the loudness of the kit: see docs/recordings.md.
constexpr auto kVoices = std::to_array<Voice>({
    // file, function, file length in frames, sounding ms,
    // {clip drive, clip bias, high-pass Hz, end fade ms, peak dBFS}
    {"bass_drum", bassDrum, kShortFrames, 480.0, {1.8, 0.2, 32.0, 90.0, -3.9}},
    {"block_1", highBlock, kShortFrames, 400.0, {1.0, 0.0, 40.0, 60.0, -4.5}},
    {"block_2", lowBlock, kShortFrames, 450.0, {1.0, 0.0, 40.0, 60.0, -4.0}},
    {"charleston", charleston, kLongFrames, 700.0, {0.0, 0.0, 200.0, 60.0, -8.4}},
    {"clave", clave, kLongFrames, 500.0, {0.0, 0.0, 60.0, 60.0, -5.8}},
    {"cymbal_1", crashCymbal, kLongFrames, 6500.0, {0.0, 0.0, 60.0, 100.0, -5.8}},
    {"cymbal_2", rideCymbal, kLongFrames, 3200.0, {0.0, 0.0, 60.0, 100.0, -8.9}},
    {"rolling_snare", rollingSnare, kLongFrames, 1500.0, {1.5, 0.0, 30.0, 60.0, -8.5}},
    {"snare", snare, kLongFrames, 800.0, {1.5, 0.0, 30.0, 60.0, -3.0}},
    {"timbal_1", highTimbal, kShortFrames, 480.0, {0.8, 0.0, 90.0, 60.0, -6.2}},
    {"timbal_2", lowTimbal, kLongFrames, 1400.0, {0.8, 0.0, 60.0, 60.0, -8.2}},
    {"triangle", triangle, kLongFrames, 5500.0, {0.0, 0.0, 120.0, 100.0, -8.5}},
});

} // namespace

std::span<const Voice> voices() noexcept {
    return kVoices;
}

} // namespace recordings
