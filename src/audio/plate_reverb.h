#pragma once

#include "audio/effect.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumivarda::dsp {

// Feedback comb with a one-pole low-pass in its loop, which makes the highs of a
// tail die first. An empty buffer is silent.
struct CombFilter {
    std::vector<float> buffer;
    std::size_t index = 0;
    float filterStore = 0.0f;

    float tick(float input, float damp, float feedback) noexcept;
};

// Freeverb's approximation of an allpass, with a fixed feedback of 0.5. An empty
// buffer is silent too; it does not pass its input.
struct AllpassFilter {
    std::vector<float> buffer;
    std::size_t index = 0;

    float tick(float input) noexcept;
    void run(float* signal, std::size_t frames) noexcept; // in place, the same as so many ticks
};

// Plate reverb: a stereo pre-delay, then per channel eight damped combs in
// parallel and four allpasses in series. The Schroeder-Moorer network with the
// line lengths of Freeverb (Jezar, 2000, public domain), chosen by ear at
// 44.1 kHz; prepare() rescales them. The output is wet only.
//
// Everything is single precision in the order written, so that a render can be
// compared bit for bit; values below 1e-30 are stored as 0 in place of a
// flush-to-zero mode of the processor.
//
// Threads: prepare() on the GUI thread while the device is closed; everything
// else with the engine mutex held. Only prepare() allocates.
class Plate70Reverb final : public VEffect {
public:
    void prepare(double sampleRateHz) override;
    void reset() noexcept override;
    StereoFrame process(float left, float right) noexcept override;

    // The same as process() for each frame in turn, only faster. Output may replace input.
    void processBlock(const float* inLeft, const float* inRight, float* outLeft, float* outRight,
                      std::size_t frames) noexcept;

    void setWet(float amount) noexcept; // 0..1, clamped

    // To be called after a change of roomSize, damping, wet or width.
    void updateCoefficients() noexcept;

    double sampleRate = 44100.0; // Hz the lines are sized for; they are empty until prepare()

    std::array<std::array<CombFilter, 8>, 2> combs; // [left, right][stage]
    std::array<std::array<AllpassFilter, 4>, 2> allpasses;
    std::vector<float> preDelayLeft;
    std::vector<float> preDelayRight;
    std::size_t preDelayWrite = 0;

    std::int32_t presetIndex = 0; // last preset applied
    float roomSize = 0.5f;        // 0..1
    float damping = 0.5f;         // 0..1
    float wet = 1.0f;             // 0..1
    float width = 1.0f;           // 0 mono .. 1 no cross-feed
    float preDelayMs = 0.0f;      // 0 is the whole line, see process()
    float inputGain = 1.0f;
    float fixedGain = 0.015f; // headroom for eight combs at full feedback

    // Set by updateCoefficients().
    float damp1 = 0.2f;
    float feedback = 0.84f;
    float wet1 = 3.0f; // own channel
    float wet2 = 0.0f; // other channel

    std::array<float, 3> extra{}; // kept with the settings; drive nothing in the sound

private:
    void preDelayToMono(const float* left, const float* right, float* mono,
                        std::size_t frames) noexcept;
    void runCombs(std::array<CombFilter, 8>& channel, const float* input, float* sum,
                  std::size_t frames) const noexcept;
    void crossFeed(float* left, float* right, std::size_t frames) const noexcept;
};

} // namespace lumivarda::dsp
