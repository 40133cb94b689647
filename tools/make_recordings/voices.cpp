#include "voices.h"

#include <array>

namespace recordings {
namespace {

constexpr std::size_t kLong = 960000; // ten seconds
constexpr std::size_t kShort = 46500; // 0.484 s

// The low cut stays below each voice's lowest partial. Sounding times let the natural
// decay pass -100 dBFS first; only the bass drum leans on its fade. Peaks set loudness:
// docs/recordings.md has the range of each role.
constexpr auto kVoices = std::to_array<Voice>({
    // file, function, its frames, sounding ms,
    // {clip drive, clip bias, low cut Hz, end fade ms, peak dB}
    {"bass_drum", bassDrum, kShort, 480.0, {1.8, 0.2, 32.0, 90.0, -3.9}},
    {"block_1", highBlock, kShort, 400.0, {1.0, 0.0, 40.0, 60.0, -4.5}},
    {"block_2", lowBlock, kShort, 450.0, {1.0, 0.0, 40.0, 60.0, -4.0}},
    {"charleston", charleston, kLong, 700.0, {0.0, 0.0, 200.0, 60.0, -8.4}},
    {"clave", clave, kLong, 500.0, {0.0, 0.0, 60.0, 60.0, -5.8}},
    {"cymbal_1", crashCymbal, kLong, 6500.0, {0.0, 0.0, 60.0, 100.0, -5.8}},
    {"cymbal_2", rideCymbal, kLong, 3200.0, {0.0, 0.0, 60.0, 100.0, -8.9}},
    {"rolling_snare", rollingSnare, kLong, 1500.0, {1.5, 0.0, 30.0, 60.0, -8.5}},
    {"snare", snare, kLong, 800.0, {1.5, 0.0, 30.0, 60.0, -3.0}},
    {"timbal_1", highTimbal, kShort, 480.0, {0.8, 0.0, 90.0, 60.0, -6.2}},
    {"timbal_2", lowTimbal, kLong, 1400.0, {0.8, 0.0, 60.0, 60.0, -8.2}},
    {"triangle", triangle, kLong, 5500.0, {0.0, 0.0, 120.0, 100.0, -8.5}},
});

} // namespace

std::span<const Voice> voices() noexcept {
    return kVoices;
}

} // namespace recordings
