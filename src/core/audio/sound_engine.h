// SPDX-License-Identifier: MIT
#pragma once

#include "audio/effect_settings.h"
#include "audio/plate_reverb.h"
#include "audio/sample_bank.h"
#include "audio/stream_clock.h"
#include "audio/trigger_queue.h"
#include "audio/voice_mixer.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>

namespace percussomatic {

constexpr std::size_t kVoiceCount = 64;
constexpr std::uint32_t kSendCount = 32; // the twelve instruments use 0..11

// Initial auto-stop: after 100 ms at or below -100 dB, but not before 50 ms of play.
constexpr float kSilenceThreshold = 1.0e-5f; // linear
constexpr std::uint32_t kSilenceHoldMs = 100;
constexpr std::uint32_t kMinPlayMs = 50;

// The sound engine: recordings, a pool of 64 voices, sends into one plate reverb, and the mix to
// 16-bit stereo. Setters clamp (a NaN counts as the minimum) and never fail; indices out of range
// are ignored.
//
// The mix is single precision in a fixed order; only a voice's position is double. Optimisations
// must not change any output bit.
//
// Threads: any. Every operation locks the one mutex and calls no other operation while it holds it.
// renderBlock() holds it while it mixes a block, which is the longest that a trigger can wait.
struct SoundEngine {
    // Starts a recording in the first idle voice, or in voice 0 if all are active. Gain is linear
    // without upper limit; negative or NaN counts as 0. No-op, without locking, while the output is
    // muted.
    void trigger(std::int32_t sampleIndex, float gain);

    // The same for the frame that belongs to a time of the monotonic counter, in the order of these
    // times. At the start of the next block, like trigger(), if that frame has been rendered
    // already, if more triggers are pending than the queue holds or while no timed blocks are
    // rendered. Whatever ends all voices drops pending triggers, as does muting.
    void triggerAt(std::int32_t sampleIndex, float gain, std::int64_t dueNs);

    // Number of due times that were passed to triggerAt() too late, since the program started.
    std::uint32_t lateTriggerCount() const;

    void setMasterVolume(float gain); // 0..1, linear

    void setSend(std::uint32_t sampleIndex, float amount); // 0..1
    float getSend(std::uint32_t sampleIndex) const;        // 0 if out of range

    void setEffectEnabled(bool enabled); // disabling also clears the tail
    bool isEffectEnabled() const;
    void setEffectPreset(std::int32_t preset); // 0..5; keeps a sounding tail
    void setEffectReturn(float level);         // 0..1
    void setEffectRoomSize(float amount);      // 0..1
    void setEffectDamping(float amount);       // 0..1
    void setEffectWidth(float amount);         // 0..1
    void setEffectPreDelayMs(float delayMs);   // 0..200
    float getEffectReturn() const;
    float getEffectRoomSize() const;
    float getEffectDamping() const;
    float getEffectWidth() const;
    float getEffectPreDelayMs() const;
    EffectSettings getEffectSettings() const;
    void setEffectSettings(const EffectSettings& settings); // the same as the five setters

    // While enabled, a voice that has played for at least minMs ends when its recording (before
    // gain) has stayed at or below the threshold (linear) for holdMs.
    void setAutoStop(bool enabled, float threshold, std::uint32_t holdMs, std::uint32_t minMs);

    // Decodes a WAVE file and appends it to the bank. Returns its index, or -1 without appending if
    // the file is null or rejected. Throws std::bad_alloc.
    std::int32_t loadSample(const void* bytes, std::size_t size);

    // Writes `frames` interleaved stereo frames to `out`. Allocates no memory.
    void renderBlock(std::int16_t* out, std::uint32_t frames) noexcept;

    // The same for a block of a device's stream: pending triggers sound at their frame. Split
    // there, the block has the same samples as if it were rendered in pieces.
    void renderTimedBlock(std::int16_t* out, std::uint32_t frames,
                          const StreamPosition& position) noexcept;

    // Both while the device is closed, on the thread that opens or closes it. The first sets the
    // device's rate and sizes and clears the reverb, which may allocate.
    void prepareForDevice();
    void deactivateAllVoices();

    mutable std::mutex mutex;

    // All guarded by mutex except the two atomics.
    std::uint32_t sampleRate = kDeviceRateHz; // Hz
    std::uint32_t framesPerBuffer = kDeviceBufferFrames;
    SampleBank samples;
    std::array<Voice, kVoiceCount> voices;
    TriggerQueue pendingTriggers;
    std::optional<StreamPosition> nextBlock; // of the timed stream; nullopt while there is none
    std::uint32_t lateTriggers = 0;
    std::int64_t lastLateNs = 0; // due time that was counted last
    float masterVolume = 1.0f;

    // Set by the GUI thread for edit mode and power-off. While muted, renders are silent and
    // neither voices nor tail advance, and pending triggers are dropped. The next render carries
    // out a stop request and clears it.
    std::atomic<std::uint8_t> outputMuted = 0;
    std::atomic<std::uint8_t> stopAllVoicesRequest = 0;

    bool autoStopEnabled = true;
    float silenceThreshold = kSilenceThreshold; // linear, inclusive
    std::uint32_t silenceHoldMs = kSilenceHoldMs;
    std::uint32_t minPlayMs = kMinPlayMs;

    lumivarda::dsp::Plate70Reverb reverb;
    std::array<float, kSendCount> sends{};
    bool effectEnabled = false;
    EffectSettings effect{.effectReturn = 0.24f,
                          .roomSize = 0.48f,
                          .damping = 0.58f,
                          .width = 0.92f,
                          .preDelayMs = 8.0f};
    float effectExtra1 = 0.28f; // copied to the reverb by setEffectPreset(); no effect on the sound
    float effectExtra2 = 0.24f;
    float effectExtra3 = 0.72f;

private:
    bool isInBankLocked(std::int32_t sampleIndex) const noexcept;
    void startVoiceLocked(std::int32_t sampleIndex, float gain) noexcept;
    bool beginBlockLocked(std::int16_t* out, std::uint32_t frames) noexcept;
    void mixBlockLocked(std::int16_t* out, std::uint32_t frames) noexcept;
    bool mixVoicesLocked(MixBus& bus, std::size_t frames) noexcept;
    void addTailLocked(MixBus& bus, std::size_t frames) noexcept;
    void stopAllVoicesLocked() noexcept;
    std::uint64_t framesOfMsLocked(std::uint32_t ms) const noexcept;
    void setEffectValue(float EffectSettings::*value, float amount);
    float getEffectValue(float EffectSettings::*value) const;
};

// The program's engine, constructed before main(). Tests construct their own.
SoundEngine& soundEngine() noexcept;

} // namespace percussomatic
