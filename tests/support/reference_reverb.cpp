// SPDX-License-Identifier: MIT
#include "support/reference_engine.h"

#include <algorithm>
#include <cmath>

namespace percussomatic::reference {

namespace {

constexpr int kCombFrames[8] = {1116, 1188, 1277, 1356, 1422, 1491, 1557, 1617};
constexpr int kAllpassFrames[4] = {556, 441, 341, 225};

ReferenceReverb::Line emptyLine(int rateHz, int frames) {
    return {std::vector<float>(static_cast<std::size_t>(std::max(rateHz * frames / 44100, 1)))};
}

float flushed(float value) {
    return std::fabs(value) < 1e-30f ? 0.0f : value;
}

} // namespace

void ReferenceReverb::prepare(double rateHz) {
    sampleRate = rateHz < 1.0 ? 1.0 : rateHz;
    const int rate = static_cast<int>(sampleRate);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        const int spread = channel == 1 ? 23 : 0;
        for (std::size_t stage = 0; stage < 8; ++stage) {
            combs[channel][stage] = emptyLine(rate, kCombFrames[stage] + spread);
        }
        for (std::size_t stage = 0; stage < 4; ++stage) {
            allpasses[channel][stage] = emptyLine(rate, kAllpassFrames[stage] + spread);
        }
        const auto frames = static_cast<std::size_t>(sampleRate * 0.21);
        preDelay[channel].assign(frames < 8 ? 8 : frames, 0.0f);
    }
    frame = 0;
}

void ReferenceReverb::reset() {
    if (!preDelay[0].empty()) {
        prepare(sampleRate);
    }
}

ReferenceReverb::Frame ReferenceReverb::process(float left, float right) {
    const float damp1 = damping * 0.4f;
    const float feedback = roomSize * 0.28f + 0.7f;
    const float wet1 = wet * 3.0f * 0.5f * (1.0f + width);
    const float wet2 = wet * 3.0f * 0.5f * (1.0f - width);

    float delayed[2] = {left, right};
    if (const std::size_t length = preDelay[0].size(); length > 0) {
        const float delay = std::clamp(static_cast<float>(sampleRate) * preDelayMs * 0.001f, 0.0f,
                                       static_cast<float>(length - 1));
        const std::size_t write = frame % length;
        const std::size_t read = (write - static_cast<std::size_t>(delay) + length) % length;
        delayed[0] = preDelay[0][read];
        delayed[1] = preDelay[1][read];
        preDelay[0][write] = left;
        preDelay[1][write] = right;
    }
    const float mono = (delayed[0] + delayed[1]) * 1.0f * 0.015f;

    float out[2] = {};
    for (std::size_t channel = 0; channel < 2 && !preDelay[0].empty(); ++channel) {
        for (Line& comb : combs[channel]) {
            float& cell = comb.buffer[frame % comb.buffer.size()];
            const float y = cell;
            comb.lowPass = flushed(y * (1.0f - damp1) + comb.lowPass * damp1);
            cell = flushed(mono + comb.lowPass * feedback);
            out[channel] += y;
        }
        for (Line& allpass : allpasses[channel]) {
            float& cell = allpass.buffer[frame % allpass.buffer.size()];
            const float delayedFrame = cell;
            cell = flushed(delayedFrame * 0.5f + out[channel]);
            out[channel] = delayedFrame - out[channel];
        }
    }
    ++frame;
    return {wet1 * out[0] + wet2 * out[1], wet2 * out[0] + wet1 * out[1]};
}

} // namespace percussomatic::reference
