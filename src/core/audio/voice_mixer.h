// SPDX-License-Identifier: MIT
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
    std::uint32_t silentFrames = 0; // consecutive; counted only while auto-stop is on
    std::uint32_t playedFrames = 0; // since the trigger; counted only while auto-stop is on
};

constexpr std::size_t kBusFrames = 512; // a multiple of kLanes

// One chunk of the mix before conversion to 16 bits. It is processed four frames at a time, so the
// frames from the chunk's end up to the next multiple of four hold unspecified values.
struct MixBus {
    alignas(16) float left[kBusFrames];
    alignas(16) float right[kBusFrames];
    alignas(16) float sendLeft[kBusFrames];
    alignas(16) float sendRight[kBusFrames];
};

// Settings common to all voices of a chunk.
struct MixSettings {
    std::size_t frames = 0;       // at most kBusFrames
    std::uint32_t sampleRate = 0; // of the device, Hz
    bool autoStop = false;
    float silenceThreshold = 0.0f; // linear, inclusive
    std::uint64_t holdFrames = 0;  // silence that ends a voice
    std::uint64_t minFrames = 0;   // played before silence may end it
};

// Memory that a voice mixed soon will read. Integers instead of pointers, because the addresses may
// lie beyond the end of the recording.
struct Prefetch {
    std::uintptr_t left = 0;
    std::uintptr_t right = 0;
    std::uintptr_t bytesPerEightFrames = 0;
};

Prefetch prefetchOf(const Voice& voice, const Sample& sample, std::uint32_t sampleRate) noexcept;

// Adds the next frames of a voice to the bus and advances the voice. The voice becomes inactive
// when its recording ends or auto-stop ends it. Without a send gain, the sends are left unchanged.
//
// `prefetch` is that of a voice that will be mixed shortly afterwards. Called with the engine mutex
// held.
void mixVoice(Voice& voice, const Sample& sample, std::optional<float> sendGain,
              const MixSettings& settings, const Prefetch& prefetch, MixBus& bus) noexcept;

} // namespace percussomatic
