#pragma once

#include "audio/sample_bank.h"
#include "audio/voice_mixer.h"
#include "support/reference_reverb.h"

#include <array>
#include <cstdint>
#include <vector>

namespace percussomatic::reference {

// The engine written for reading: frame by frame, every voice in turn, no lock. Its
// operations have the engine's names, so that one script can drive both.
struct ReferenceEngine {
    void trigger(std::int32_t sampleIndex, float gain);
    void setMasterVolume(float gain) { masterVolume = limited(gain); }
    void setSend(std::uint32_t sampleIndex, float amount) {
        if (sampleIndex < 32) {
            sends[sampleIndex] = limited(amount);
        }
    }
    void setEffectEnabled(bool enabled);
    void setEffectPreset(std::int32_t preset);
    void setEffectReturn(float level) { effectReturn = limited(level); }
    void setEffectRoomSize(float amount) { reverb.roomSize = limited(amount); }
    void setEffectDamping(float amount) { reverb.damping = limited(amount); }
    void setEffectWidth(float amount) { reverb.width = limited(amount); }
    void setEffectPreDelayMs(float delayMs) { reverb.preDelayMs = limited(delayMs, 200.0f); }
    void setAutoStop(bool enabled, float threshold, std::uint32_t holdMs, std::uint32_t minMs);
    void renderBlock(std::int16_t* out, std::uint32_t frames);
    void prepareForDevice() { reverb.prepare(48000.0); }

    std::vector<Sample> samples;
    std::array<Voice, 64> voices;
    bool outputMuted = false;
    bool stopAllVoicesRequest = false;

    std::uint32_t sampleRate = 48000;
    float masterVolume = 1.0f;
    bool autoStopEnabled = true;
    float silenceThreshold = 1.0e-5f;
    std::uint32_t silenceHoldMs = 100;
    std::uint32_t minPlayMs = 50;
    ReferenceReverb reverb;
    std::array<float, 32> sends{};
    bool effectEnabled = false;
    float effectReturn = 0.24f;

private:
    static float limited(float value, float highest = 1.0f) {
        return value > highest ? highest : value > 0.0f ? value : 0.0f;
    }
    void renderFrame(std::int16_t* out);
};

} // namespace percussomatic::reference
