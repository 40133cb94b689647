#pragma once

#include "audio/sample_bank.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace percussomatic {

struct Voice {
    std::int32_t sampleIndex = -1; // into the bank, -1 for none
    double position = 0.0;         // source frames
    float gain = 1.0f;
    bool active = false;
    std::uint32_t silentFrames = 0; // in a row; counted while auto-stop is on
    std::uint32_t playedFrames = 0; // since the trigger; counted while auto-stop is on
};

constexpr std::size_t kBusFrames = 512; // a multiple of the lanes

// One stretch of the mix before conversion. Frames are worked on in fours, so those
// between the stretch's end and the next multiple of four hold nothing of use.
struct MixBus {
    alignas(16) float left[kBusFrames];
    alignas(16) float right[kBusFrames];
    alignas(16) float sendLeft[kBusFrames];
    alignas(16) float sendRight[kBusFrames];
};

// What all voices of a stretch have in common.
struct MixSettings {
    std::size_t frames = 0; // at most kBusFrames
    std::uint32_t sampleRate = 0;
    bool autoStop = false;
    float silenceThreshold = 0.0f;
    std::uint64_t holdFrames = 0;
    std::uint64_t minFrames = 0;
};

// Where a voice that is mixed soon will read, as addresses, since they may lie beyond
// the end of its recording.
struct Prefetch {
    std::uintptr_t left = 0;
    std::uintptr_t right = 0;
    std::uintptr_t bytesPerEightFrames = 0;
};

Prefetch prefetchOf(const Voice& voice, const Sample& sample, std::uint32_t sampleRate) noexcept;

// Adds the next frames of a voice to the bus and moves the voice on; it is inactive
// afterwards when its recording has ended or the auto-stop has ended it. The sends are
// added to when there is a send gain.
//
// Threads: with the engine mutex held.
void mixVoice(Voice& voice, const Sample& sample, std::optional<float> sendGain,
              const MixSettings& settings, const Prefetch& prefetch, MixBus& bus) noexcept;

} // namespace percussomatic
