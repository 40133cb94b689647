#include "support/reference_reverb.h"

#include <cmath>

namespace percussomatic::reference {

namespace {

constexpr int kCombFrames[8] = {1116, 1188, 1277, 1356, 1422, 1491, 1557, 1617};
constexpr int kAllpassFrames[4] = {556, 441, 341, 225};

std::size_t scaledFrames(int rateHz, int frames) {
    const int scaled = (rateHz * frames) / 44100;
    return static_cast<std::size_t>(scaled < 1 ? 1 : scaled);
}

float orZero(float value) {
    return std::fabs(value) < 1e-30f ? 0.0f : value;
}

} // namespace

void ReferenceReverb::prepare(double rateHz) {
    sampleRate = rateHz < 1.0 ? 1.0 : rateHz;
    const int rate = static_cast<int>(sampleRate);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const int spread = channel == 1 ? 23 : 0;
        for (std::size_t stage = 0; stage < 8; ++stage) {
            combs[channel][stage].memory.resize(scaledFrames(rate, kCombFrames[stage] + spread));
        }
        for (std::size_t stage = 0; stage < 4; ++stage) {
            allpasses[channel][stage].memory.resize(
                scaledFrames(rate, kAllpassFrames[stage] + spread));
        }
        const auto frames = static_cast<std::size_t>(sampleRate * 0.21);
        preDelay[channel].resize(frames < 8 ? 8 : frames);
    }
    reset();
}

void ReferenceReverb::reset() {
    for (std::size_t channel = 0; channel < 2; ++channel) {
        for (Line& comb : combs[channel]) {
            comb.memory.assign(comb.memory.size(), 0.0f);
            comb.lowPass = 0.0f;
        }
        for (Line& allpass : allpasses[channel]) {
            allpass.memory.assign(allpass.memory.size(), 0.0f);
        }
        preDelay[channel].assign(preDelay[channel].size(), 0.0f);
    }
    frame = 0;
}

ReferenceReverb::Frame ReferenceReverb::process(float left, float right) {
    const float damp1 = damping * 0.4f;
    const float feedback = roomSize * 0.28f + 0.7f;
    const float wet1 = wet * 3.0f * 0.5f * (1.0f + width);
    const float wet2 = wet * 3.0f * 0.5f * (1.0f - width);

    float delayed[2] = {left, right};
    if (!preDelay[0].empty()) {
        const std::size_t length = preDelay[0].size();
        float delay = static_cast<float>(sampleRate) * preDelayMs * 0.001f;
        if (delay < 0.0f) {
            delay = 0.0f;
        }
        if (delay > static_cast<float>(length - 1)) {
            delay = static_cast<float>(length - 1);
        }
        const std::size_t write = frame % length;
        const std::size_t read = (write - static_cast<std::size_t>(delay) + length) % length;
        delayed[0] = preDelay[0][read];
        delayed[1] = preDelay[1][read];
        preDelay[0][write] = left;
        preDelay[1][write] = right;
    }
    const float mono = (delayed[0] + delayed[1]) * 1.0f * 0.015f;

    float out[2];
    for (std::size_t channel = 0; channel < 2; ++channel) {
        out[channel] = 0.0f;
        for (Line& comb : combs[channel]) {
            if (comb.memory.empty()) {
                continue;
            }
            float& cell = comb.memory[frame % comb.memory.size()];
            const float y = cell;
            comb.lowPass = orZero(y * (1.0f - damp1) + comb.lowPass * damp1);
            cell = orZero(mono + comb.lowPass * feedback);
            out[channel] += y;
        }
        for (Line& allpass : allpasses[channel]) {
            if (allpass.memory.empty()) {
                out[channel] = 0.0f;
                continue;
            }
            float& cell = allpass.memory[frame % allpass.memory.size()];
            const float b = cell;
            cell = orZero(b * 0.5f + out[channel]);
            out[channel] = b - out[channel];
        }
    }
    ++frame;
    return {wet1 * out[0] + wet2 * out[1], wet2 * out[0] + wet1 * out[1]};
}

} // namespace percussomatic::reference
