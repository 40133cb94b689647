#include "audio/plate_reverb.h"

#include <algorithm>
#include <cmath>

namespace lumivarda::dsp {

namespace {

// Frames at 44.1 kHz, left channel.
constexpr std::int64_t kTuningRateHz = 44100;
constexpr std::array<std::int64_t, 8> kCombFrames{1116, 1188, 1277, 1356, 1422, 1491, 1557, 1617};
constexpr std::array<std::int64_t, 4> kAllpassFrames{556, 441, 341, 225};
constexpr std::int64_t kStereoSpreadFrames = 23; // right lines are longer: decorrelates the sides

constexpr double kPreDelayLineSeconds = 0.21; // a little more than the longest setting, 200 ms
constexpr std::size_t kMinPreDelayFrames = 8;
constexpr float kAllpassFeedback = 0.5f;
constexpr float kFlushBelow = 1e-30f; // far below hearing, far above the denormals

float flushed(float value) noexcept {
    return std::fabs(value) < kFlushBelow ? 0.0f : value;
}

std::size_t wrapped(std::size_t index, std::size_t length) noexcept {
    return index == length ? 0 : index;
}

std::size_t lineFrames(std::int64_t rateHz, std::int64_t tuningFrames) {
    return static_cast<std::size_t>(
        std::max<std::int64_t>(rateHz * tuningFrames / kTuningRateHz, 1));
}

} // namespace

float CombFilter::tick(float input, float damp, float feedback) noexcept {
    if (buffer.empty()) {
        return 0.0f;
    }
    const float output = buffer[index];
    filterStore = flushed(output * (1.0f - damp) + filterStore * damp);
    buffer[index] = flushed(input + filterStore * feedback);
    index = wrapped(index + 1, buffer.size());
    return output;
}

float AllpassFilter::tick(float input) noexcept {
    if (buffer.empty()) {
        return 0.0f;
    }
    const float delayed = buffer[index];
    buffer[index] = flushed(delayed * kAllpassFeedback + input);
    index = wrapped(index + 1, buffer.size());
    return delayed - input;
}

void Plate70Reverb::prepare(double sampleRateHz) {
    sampleRate = sampleRateHz > 1.0 ? sampleRateHz : 1.0;
    const auto rateHz = static_cast<std::int64_t>(sampleRate);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const std::int64_t spread = channel == 0 ? 0 : kStereoSpreadFrames;
        for (std::size_t stage = 0; stage < kCombFrames.size(); ++stage) {
            combs[channel][stage].buffer.resize(lineFrames(rateHz, kCombFrames[stage] + spread));
        }
        for (std::size_t stage = 0; stage < kAllpassFrames.size(); ++stage) {
            allpasses[channel][stage].buffer.resize(
                lineFrames(rateHz, kAllpassFrames[stage] + spread));
        }
    }
    const auto preDelayFrames =
        std::max(static_cast<std::size_t>(sampleRate * kPreDelayLineSeconds), kMinPreDelayFrames);
    preDelayLeft.resize(preDelayFrames);
    preDelayRight.resize(preDelayFrames);
    reset();
    updateCoefficients();
}

void Plate70Reverb::reset() noexcept {
    const auto clear = [](std::vector<float>& line) { std::fill(line.begin(), line.end(), 0.0f); };
    for (auto& channel : combs) {
        for (CombFilter& comb : channel) {
            clear(comb.buffer);
            comb.index = 0;
            comb.filterStore = 0.0f;
        }
    }
    for (auto& channel : allpasses) {
        for (AllpassFilter& allpass : channel) {
            clear(allpass.buffer);
            allpass.index = 0;
        }
    }
    clear(preDelayLeft);
    clear(preDelayRight);
    preDelayWrite = 0;
}

StereoFrame Plate70Reverb::process(float left, float right) noexcept {
    if (!preDelayLeft.empty()) {
        const std::size_t length = preDelayLeft.size();
        const float wanted = static_cast<float>(sampleRate) * preDelayMs * 0.001f;
        const float delay = wanted > 0.0f ? std::min(wanted, static_cast<float>(length - 1)) : 0.0f;
        const auto delayFrames = static_cast<std::size_t>(delay);
        const std::size_t read = (preDelayWrite + length - delayFrames) % length;
        // Reading comes before writing on purpose: a delay of 0 yields the frame of a
        // whole line ago, not the current one.
        const StereoFrame delayed{preDelayLeft[read], preDelayRight[read]};
        preDelayLeft[preDelayWrite] = left;
        preDelayRight[preDelayWrite] = right;
        preDelayWrite = wrapped(preDelayWrite + 1, length);
        left = delayed.left;
        right = delayed.right;
    }

    const float input = (left + right) * inputGain * fixedGain;
    std::array<float, 2> output{};
    for (std::size_t channel = 0; channel < 2; ++channel) {
        float sum = 0.0f;
        for (CombFilter& comb : combs[channel]) {
            sum += comb.tick(input, damp1, feedback);
        }
        for (AllpassFilter& allpass : allpasses[channel]) {
            sum = allpass.tick(sum);
        }
        output[channel] = sum;
    }
    return {wet1 * output[0] + wet2 * output[1], wet2 * output[0] + wet1 * output[1]};
}

void Plate70Reverb::setWet(float amount) noexcept {
    wet = amount > 0.0f ? std::min(amount, 1.0f) : 0.0f;
    updateCoefficients();
}

void Plate70Reverb::updateCoefficients() noexcept {
    fixedGain = 0.015f;
    damp1 = damping * 0.4f;
    feedback = roomSize * 0.28f + 0.7f; // 0.7..0.98, always decaying
    wet1 = wet * 3.0f * 0.5f * (1.0f + width);
    wet2 = wet * 3.0f * 0.5f * (1.0f - width);
}

} // namespace lumivarda::dsp
