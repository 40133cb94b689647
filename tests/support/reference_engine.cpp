// SPDX-License-Identifier: MIT
#include "support/reference_engine.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace percussomatic::reference {

namespace {

// Return, room size, damping, width, pre-delay in ms.
constexpr std::tuple<float, float, float, float, float> kPresets[6] = {
    {0.20f, 0.42f, 0.58f, 0.92f, 5.0f},  {0.24f, 0.62f, 0.48f, 1.00f, 10.0f},
    {0.16f, 0.28f, 0.66f, 0.78f, 2.0f},  {0.30f, 0.82f, 0.38f, 1.00f, 18.0f},
    {0.34f, 0.92f, 0.42f, 1.00f, 26.0f}, {0.38f, 0.97f, 0.58f, 0.88f, 32.0f},
};

std::int16_t toPcm(float value) {
    return static_cast<std::int16_t>(std::isnan(value) ? 0.0f
                                                       : std::clamp(value, -1.0f, 1.0f) * 32767.0f);
}

double frameOf(std::int64_t dueNs, const StreamPosition& position) {
    return std::floor(static_cast<double>(dueNs - position.originNs) * 48e-6 + 0.5);
}

std::uint64_t framesOf(std::uint64_t ms, std::uint32_t rateHz) {
    return std::max<std::uint64_t>(rateHz * ms / 1000, 1);
}

} // namespace

void ReferenceEngine::trigger(std::int32_t sampleIndex, float gain) {
    if (outputMuted || sampleIndex < 0 || sampleIndex >= static_cast<int>(samples.size())) {
        return;
    }
    std::size_t slot = 0;
    while (slot < 64 && voices[slot].active) {
        ++slot;
    }
    voices[slot % 64] = {sampleIndex, 0.0, gain > 0.0f ? gain : 0.0f, true, 0, 0};
}

void ReferenceEngine::setEffectEnabled(bool enabled) {
    effectEnabled = enabled;
    if (!enabled) {
        reverb.reset();
    }
}

void ReferenceEngine::setEffectPreset(std::int32_t preset) {
    std::tie(effectReturn, reverb.roomSize, reverb.damping, reverb.width, reverb.preDelayMs) =
        kPresets[std::clamp(preset, 0, 5)];
}

void ReferenceEngine::triggerAt(std::int32_t sampleIndex, float gain, std::int64_t dueNs) {
    const bool waits = nextBlock && pending.size() < 64 &&
                       frameOf(dueNs, *nextBlock) >= static_cast<double>(nextBlock->firstFrame);
    if (!waits) {
        return trigger(sampleIndex, gain);
    }
    if (!outputMuted && sampleIndex >= 0 && sampleIndex < static_cast<int>(samples.size())) {
        pending.push_back({dueNs, sampleIndex, gain});
        std::ranges::stable_sort(pending, {}, &Pending::dueNs);
    }
}

void ReferenceEngine::carryOutStopRequest() {
    if (stopAllVoicesRequest) {
        for (Voice& voice : voices) {
            voice = {-1, 0.0, 0.0f, false, voice.silentFrames, voice.playedFrames};
        }
        pending.clear();
    }
    stopAllVoicesRequest = false;
}

void ReferenceEngine::renderTimedBlock(std::int16_t* out, std::uint32_t frames,
                                       const StreamPosition& position) {
    nextBlock = position;
    for (; frames > 0; --frames, ++nextBlock->firstFrame, out += 2) {
        carryOutStopRequest();
        if (outputMuted) {
            pending.clear();
            std::fill_n(out, 2, std::int16_t{0});
            continue;
        }
        while (!pending.empty() && frameOf(pending.front().dueNs, *nextBlock) <=
                                       static_cast<double>(nextBlock->firstFrame)) {
            trigger(pending.front().sampleIndex, pending.front().gain);
            pending.erase(pending.begin());
        }
        renderFrame(out);
    }
}

void ReferenceEngine::renderBlock(std::int16_t* out, std::uint32_t frames) {
    // Due now, whatever their times.
    renderTimedBlock(out, frames, {std::numeric_limits<std::int64_t>::max() / 4, 0});
    nextBlock.reset();
}

void ReferenceEngine::renderFrame(std::int16_t* out) {
    float L = 0.0f, R = 0.0f, sendL = 0.0f, sendR = 0.0f;
    for (Voice& voice : voices) {
        if (!voice.active || voice.sampleIndex < 0) {
            continue;
        }
        const auto index = static_cast<std::size_t>(voice.sampleIndex);
        const Sample& sample = samples[index];
        const std::size_t n = sample.left.size();
        const auto i = static_cast<std::size_t>(voice.position);
        if (i >= n) {
            voice.active = false;
            continue;
        }
        const auto frac = static_cast<float>(voice.position - static_cast<double>(i));
        const std::size_t j = i + 1 < n ? i + 1 : n - 1;
        const float l = sample.left[i] + (sample.left[j] - sample.left[i]) * frac;
        const float r = sample.right[i] + (sample.right[j] - sample.right[i]) * frac;
        L += voice.gain * l;
        R += voice.gain * r;
        if (effectEnabled && index < 32) {
            sendL += (sends[index] * voice.gain) * l;
            sendR += (sends[index] * voice.gain) * r;
        }
        if (autoStopEnabled) {
            const bool silent =
                std::fabs(l) <= silenceThreshold && std::fabs(r) <= silenceThreshold;
            voice.silentFrames = silent ? voice.silentFrames + 1 : 0;
            voice.playedFrames += 1;
            if (voice.playedFrames >= framesOf(minPlayMs, sampleRate) &&
                voice.silentFrames >= framesOf(silenceHoldMs, sampleRate)) {
                voice.active = false;
                continue;
            }
        }
        voice.position += static_cast<double>(sample.sampleRate) / static_cast<double>(sampleRate);
    }
    if (effectEnabled) {
        const ReferenceReverb::Frame wet = reverb.process(sendL, sendR);
        L += effectReturn * wet.left;
        R += effectReturn * wet.right;
    }
    out[0] = toPcm(L * masterVolume);
    out[1] = toPcm(R * masterVolume);
}

} // namespace percussomatic::reference
