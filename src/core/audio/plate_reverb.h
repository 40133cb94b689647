#pragma once

#include "audio/effect.h"
#include "audio/effect_settings.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace lumivarda::dsp {

// Feedback comb with a one-pole low-pass in its loop, which makes the highs of a tail die first.
// Silent while its buffer is empty.
struct CombFilter {
    std::vector<float> buffer;
    std::size_t index = 0;
    float filterStore = 0.0f;

    float tick(float input, float damp, float feedback) noexcept;
};

// Freeverb's approximation of an allpass, with a fixed feedback. Silent while its buffer is empty:
// it does not pass its input then.
struct AllpassFilter {
    std::vector<float> buffer;
    std::size_t index = 0;

    float tick(float input) noexcept;
    void run(float* signal, std::size_t frames) noexcept; // in place, the same as a tick per frame
};

// From settings of 0..1 to coefficients, as Freeverb scales them (Jezar, 2000, public domain).
inline constexpr float kFixedGain = 0.015f;  // headroom for eight combs at full feedback
inline constexpr float kDampingScale = 0.4f; // low-pass coefficient of a comb: 0..0.4
inline constexpr float kRoomOffset = 0.7f;   // feedback of a comb: 0.7..0.98, always decaying
inline constexpr float kRoomScale = 0.28f;
inline constexpr float kWetScale = 3.0f; // restores the level that the fixed gain took
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
// Everything is single precision in the order written, so that a render can be compared bit for
// bit. Values below 1e-30 are stored as 0, in place of a flush-to-zero mode of the processor.
//
// Threads: prepare() on the GUI thread while the device is closed; everything else with the engine
// mutex held. Only prepare() allocates.
class Plate70Reverb final : public VEffect {
public:
    void prepare(double sampleRateHz) override;
    void reset() noexcept override;
    StereoFrame process(float left, float right) noexcept override;

    // The same as process() for each frame in turn, only faster. Output may replace input.
    void processBlock(const float* inLeft, const float* inRight, float* outLeft, float* outRight,
                      std::size_t frames) noexcept;

    void setWet(float amount) noexcept; // 0..1, clamped

    // To be called after a change of the settings or of wet.
    void updateCoefficients() noexcept;

    double sampleRate = 44100.0; // Hz the lines are sized for; they are empty until prepare()

    std::array<std::array<CombFilter, 8>, 2> combs; // [left, right][stage]
    std::array<std::array<AllpassFilter, 4>, 2> allpasses;
    std::vector<float> preDelayLeft;
    std::vector<float> preDelayRight;
    std::size_t preDelayWrite = 0;

    std::int32_t presetIndex = 0; // last preset applied
    // The return is the engine's business. A pre-delay of 0 is the whole line, see process().
    percussomatic::EffectSettings settings{.roomSize = 0.5f, .damping = 0.5f, .width = 1.0f};
    float wet = 1.0f; // 0..1
    float inputGain = 1.0f;

    // Set by updateCoefficients(); here for the settings above.
    float fixedGain = kFixedGain;
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
