// SPDX-License-Identifier: MIT
#pragma once

#include "audio/effect.h"
#include "audio/effect_settings.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumivarda::dsp {

// Feedback comb filter with a one-pole low-pass in its loop, so that high frequencies decay faster.
// Returns 0 while its buffer is empty.
struct CombFilter {
    std::vector<float> buffer;
    std::size_t index = 0;
    float filterStore = 0.0f;

    float tick(float input, float damp, float feedback) noexcept;
};

// Freeverb's approximation of an allpass filter, with a fixed feedback. Returns 0, not its input,
// while its buffer is empty.
struct AllpassFilter {
    std::vector<float> buffer;
    std::size_t index = 0;

    float tick(float input) noexcept;
    void run(float* signal, std::size_t frames) noexcept; // in place, equal to tick() per frame
};

// Scale factors from settings of 0..1 to coefficients, as in Freeverb (Jezar, 2000, public domain).
inline constexpr float kFixedGain = 0.015f;  // headroom for eight combs at full feedback
inline constexpr float kDampingScale = 0.4f; // low-pass coefficient of a comb: 0..0.4
inline constexpr float kRoomOffset = 0.7f;   // feedback of a comb: 0.7..0.98, always decaying
inline constexpr float kRoomScale = 0.28f;
inline constexpr float kWetScale = 3.0f; // makes up for the fixed gain
inline constexpr float kAllpassFeedback = 0.5f;

// Plate reverb: the Schroeder-Moorer network with the line lengths of Freeverb, chosen by ear at
// 44.1 kHz; prepare() rescales them. The output is wet only.
//
//   left  --> pre-delay --+                +--> 8 combs in parallel --> 4 allpasses in series --> L
//                         +--> sum x gain -+
//   right --> pre-delay --+                +--> 8 combs, 4 allpasses, each 23 frames longer   --> R
//
//   comb:     out = line[i];  low = out x (1 - damp) + low x damp;  line[i] = in + low x feedback
//   allpass:  old = line[i];  line[i] = old x 0.5 + in;             out = old - in
//   output:   left = wet1 x L + wet2 x R;  right = wet2 x L + wet1 x R   (cross-feed by width)
//
// All arithmetic is single precision in the order written, so that renders can be compared bit for
// bit. Values below 1e-30 are stored as 0; this replaces the processor's flush-to-zero mode.
//
// Threads: all calls with the engine mutex held, on any thread; prepare(), which allocates, only
// while the device is closed, on the thread that is about to open it.
class Plate70Reverb final : public VEffect {
public:
    void prepare(double sampleRateHz) override;
    void reset() noexcept override;
    StereoFrame process(float left, float right) noexcept override;

    // Equal to process() for each frame, but faster. Outputs may be the same arrays as inputs.
    void processBlock(const float* inLeft, const float* inRight, float* outLeft, float* outRight,
                      std::size_t frames) noexcept;

    void setWet(float amount) noexcept; // 0..1, clamped

    // Must be called after every change of `settings` or `wet`.
    void updateCoefficients() noexcept;

    double sampleRate = 44100.0; // Hz that the lines are sized for; they are empty before prepare()

    std::array<std::array<CombFilter, 8>, 2> combs; // [left, right][stage]
    std::array<std::array<AllpassFilter, 4>, 2> allpasses;
    std::vector<float> preDelayLeft;
    std::vector<float> preDelayRight;
    std::size_t preDelayWrite = 0;

    std::int32_t presetIndex = 0; // last preset applied
    // effectReturn is unused here: the engine applies it. A pre-delay of 0 ms delays by the whole
    // line, see preDelayToMono().
    percussomatic::EffectSettings settings{.roomSize = 0.5f, .damping = 0.5f, .width = 1.0f};
    float wet = 1.0f; // 0..1
    float inputGain = 1.0f;

    // Set by updateCoefficients(). The initial values belong to the initial settings above.
    float fixedGain = kFixedGain;
    float damp1 = 0.2f;
    float feedback = 0.84f;
    float wet1 = 3.0f; // gain of the same channel
    float wet2 = 0.0f; // gain of the opposite channel

    std::array<float, 3> extra{}; // stored with the settings; no effect on the sound

private:
    void preDelayToMono(const float* left, const float* right, float* mono,
                        std::size_t frames) noexcept;
    void runCombs(std::array<CombFilter, 8>& channel, const float* input, float* sum,
                  std::size_t frames) const noexcept;
    void crossFeed(float* left, float* right, std::size_t frames) const noexcept;
};

} // namespace lumivarda::dsp
