// SPDX-License-Identifier: MIT
#pragma once

#include "audio/sample_bank.h"
#include "audio/stream_clock.h"
#include "audio/voice_mixer.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <tuple>
#include <vector>

namespace percussomatic::reference {

// Slow exact version of the plate reverb, frame by frame, to compare the fast one with bit for bit.
// Delay lines are indexed by the number of frames processed.
struct ReferenceReverb {
    struct Line {
        std::vector<float> buffer; // empty before prepare()
        float lowPass = 0.0f;
    };
    struct Frame {
        float left, right;
    };

    void prepare(double rateHz); // sizes and clears all lines
    void reset();                // clears all lines
    Frame process(float left, float right);

    float roomSize = 0.5f, damping = 0.5f, wet = 1.0f, width = 1.0f, preDelayMs = 0.0f;

    double sampleRate = 44100.0;
    std::array<std::array<Line, 8>, 2> combs;
    std::array<std::array<Line, 4>, 2> allpasses;
    std::array<std::vector<float>, 2> preDelay;
    std::size_t frame = 0;
};

// Slow exact version of the sound engine: frame by frame, voice by voice, without a lock. Its
// operations and fields have the engine's names, so that a template can drive both.
struct ReferenceEngine {
    void trigger(std::int32_t sampleIndex, float gain);
    void triggerAt(std::int32_t sampleIndex, float gain, std::int64_t dueNs);
    void setMasterVolume(float gain) { masterVolume = clamped(gain); }
    void setSend(std::uint32_t sampleIndex, float amount) {
        if (sampleIndex < 32) {
            sends[sampleIndex] = clamped(amount);
        }
    }
    void setEffectEnabled(bool enabled);
    void setEffectPreset(std::int32_t preset);
    void setEffectReturn(float level) { effectReturn = clamped(level); }
    void setEffectRoomSize(float amount) { reverb.roomSize = clamped(amount); }
    void setEffectDamping(float amount) { reverb.damping = clamped(amount); }
    void setEffectWidth(float amount) { reverb.width = clamped(amount); }
    void setEffectPreDelayMs(float delayMs) { reverb.preDelayMs = clamped(delayMs, 200.0f); }
    void setAutoStop(bool enabled, float threshold, std::uint32_t holdMs, std::uint32_t minMs) {
        std::tie(autoStopEnabled, silenceThreshold) = std::tuple(enabled, threshold);
        std::tie(silenceHoldMs, minPlayMs) = std::tuple(holdMs, minMs);
    }
    void renderBlock(std::int16_t* out, std::uint32_t frames);
    void renderTimedBlock(std::int16_t* out, std::uint32_t frames, const StreamPosition& position);
    void prepareForDevice() { reverb.prepare(48000.0); }

    std::vector<Sample> samples;
    std::array<Voice, 64> voices;
    bool outputMuted = false, stopAllVoicesRequest = false;

    std::uint32_t sampleRate = 48000;
    float masterVolume = 1.0f;
    bool autoStopEnabled = true;
    float silenceThreshold = 1.0e-5f;
    std::uint32_t silenceHoldMs = 100, minPlayMs = 50;
    ReferenceReverb reverb;
    std::array<float, 32> sends{};
    bool effectEnabled = false;
    float effectReturn = 0.24f;

    struct Pending {
        std::int64_t dueNs;
        std::int32_t sampleIndex;
        float gain;
    };
    std::vector<Pending> pending;
    std::optional<StreamPosition> nextBlock;

private:
    static float clamped(float value, float max = 1.0f) { // a NaN becomes 0
        return value > max ? max : value > 0.0f ? value : 0.0f;
    }
    void carryOutStopRequest();
    void renderFrame(std::int16_t* out);
};

} // namespace percussomatic::reference
