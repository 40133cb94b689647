#pragma once

#include "audio/sample_bank.h"
#include "support/plain_reverb.h"

#include <array>
#include <cstdint>
#include <vector>

namespace percussomatic::plain {

// The engine written for reading: frame by frame, every voice in turn, no lock. Its
// operations have the engine's names, so that one script can drive both.
struct PlainEngine {
    struct Voice {
        std::int32_t sampleIndex = -1;
        double position = 0.0;
        float gain = 1.0f;
        bool active = false;
        std::uint32_t silentFrames = 0;
        std::uint32_t playedFrames = 0;
    };

    void trigger(std::int32_t sampleIndex, float gain);
    void setMasterVolume(float gain);
    void setSend(std::uint32_t sampleIndex, float amount);
    void setEffectEnabled(bool enabled);
    void setEffectPreset(std::int32_t preset);
    void setEffectReturn(float level);
    void setEffectRoomSize(float amount);
    void setEffectDamping(float amount);
    void setEffectWidth(float amount);
    void setEffectPreDelayMs(float delayMs);
    void setAutoStop(bool enabled, float threshold, std::uint32_t holdMs, std::uint32_t minMs);
    void renderBlock(std::int16_t* out, std::uint32_t frames);
    void prepareForDevice();

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
    PlainReverb reverb;
    std::array<float, 32> sends{};
    bool effectEnabled = false;
    float effectReturn = 0.24f;

private:
    void renderFrame(std::int16_t* out);
};

} // namespace percussomatic::plain
