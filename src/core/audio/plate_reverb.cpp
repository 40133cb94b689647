// SPDX-License-Identifier: MIT
#include "audio/plate_reverb.h"

#include "audio/lanes.h"

#include <algorithm>
#include <cmath>

namespace lumivarda::dsp {

namespace {

// Line lengths in frames at 44.1 kHz, left channel.
constexpr std::int64_t kTuningRateHz = 44100;
constexpr std::array<std::int64_t, 8> kCombFrames{1116, 1188, 1277, 1356, 1422, 1491, 1557, 1617};
constexpr std::array<std::int64_t, 4> kAllpassFrames{556, 441, 341, 225};
// The right channel's lines are this much longer, which decorrelates the channels.
constexpr std::int64_t kStereoSpreadFrames = 23;

constexpr double kPreDelayLineSeconds = 0.21; // slightly more than kMaxPreDelayMs
constexpr std::size_t kMinPreDelayFrames = 8;

constexpr float kFlushBelow = 1e-30f; // inaudible, but far above the denormals
constexpr std::size_t kChunkFrames = 512;

float flushed(float value) noexcept {
    return std::fabs(value) < kFlushBelow ? 0.0f : value;
}

std::size_t wrapped(std::size_t index, std::size_t length) noexcept {
    return index == length ? 0 : index;
}

constexpr std::size_t wholeLanes(std::size_t frames) noexcept { // rounded down
    return frames / kLanes * kLanes;
}

std::size_t lineFrames(std::int64_t rateHz, std::int64_t tuningFrames) {
    return static_cast<std::size_t>(
        std::max<std::int64_t>(rateHz * tuningFrames / kTuningRateHz, 1));
}

// Four combs processed together, one lane each.
struct FourCombs {
    float* lines[kLanes]; // each at its current index
    Lanes filterStore;
};

struct CombCoefficients {
    Lanes open; // 1 - damp
    Lanes damp;
    Lanes feedback;
};

FourCombs gather(CombFilter* combs) noexcept {
    FourCombs four{};
    float stores[kLanes];
    for (std::size_t i = 0; i < kLanes; ++i) {
        four.lines[i] = combs[i].buffer.data() + combs[i].index;
        stores[i] = combs[i].filterStore;
    }
    four.filterStore = load(stores);
    return four;
}

void scatter(const FourCombs& four, CombFilter* combs, std::size_t frames) noexcept {
    float stores[kLanes];
    store(stores, four.filterStore);
    for (std::size_t i = 0; i < kLanes; ++i) {
        combs[i].filterStore = stores[i];
        combs[i].index = wrapped(combs[i].index + frames, combs[i].buffer.size());
    }
}

// Advances four combs by four frames. A row holds four frames of one comb's line. A comb's low-pass
// depends on its previous frame but not on the other combs, so it is computed by column: one frame
// of all four combs. Unrolled, because otherwise the rows do not stay in registers.
inline Lanes tickFourTimes(FourCombs& combs, std::size_t frame,
                           const CombCoefficients& coefficients, Lanes input, Lanes sum) noexcept {
    const Lanes limit = broadcast(kFlushBelow);
    Lanes rows[kLanes];
#pragma GCC unroll 4
    for (std::size_t i = 0; i < kLanes; ++i) {
        const Lanes output = load(combs.lines[i] + frame);
        sum = sum + output;
        rows[i] = output * coefficients.open;
    }
    transpose(rows);
#pragma GCC unroll 4
    for (Lanes& column : rows) {
        column = flushBelow(limit, column + combs.filterStore * coefficients.damp);
        combs.filterStore = column;
    }
    transpose(rows);
#pragma GCC unroll 4
    for (std::size_t i = 0; i < kLanes; ++i) {
        store(combs.lines[i] + frame, flushBelow(limit, input + rows[i] * coefficients.feedback));
    }
    return sum;
}

// Runs all combs of a channel over a multiple of four frames within which no line wraps.
void runEightCombs(CombFilter* combs, const CombCoefficients& coefficients, const float* input,
                   float* sum, std::size_t frames) noexcept {
    FourCombs low = gather(combs);
    FourCombs high = gather(combs + kLanes);
    for (std::size_t frame = 0; frame < frames; frame += kLanes) {
        const Lanes in = load(input + frame);
        const Lanes half = tickFourTimes(low, frame, coefficients, in, broadcast(0.0f));
        store(sum + frame, tickFourTimes(high, frame, coefficients, in, half));
    }
    scatter(low, combs, frames);
    scatter(high, combs + kLanes, frames);
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

void AllpassFilter::run(float* signal, std::size_t frames) noexcept {
    const Lanes half = broadcast(kAllpassFeedback);
    const Lanes limit = broadcast(kFlushBelow);
    std::size_t frame = 0;
    while (frame < frames) {
        const std::size_t count = wholeLanes(std::min(frames - frame, buffer.size() - index));
        float* const line = buffer.data() + index;
        for (std::size_t i = 0; i < count; i += kLanes) {
            const Lanes input = load(signal + frame + i);
            const Lanes delayed = load(line + i);
            store(line + i, flushBelow(limit, delayed * half + input));
            store(signal + frame + i, delayed - input);
        }
        index = wrapped(index + count, buffer.size());
        frame += count;
        if (frame < frames) { // fewer than four frames until the line wraps or the signal ends
            signal[frame] = tick(signal[frame]);
            ++frame;
        }
    }
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
    StereoFrame frame;
    processBlock(&left, &right, &frame.left, &frame.right, 1);
    return frame;
}

void Plate70Reverb::processBlock(const float* inLeft, const float* inRight, float* outLeft,
                                 float* outRight, std::size_t frames) noexcept {
    const std::array<float*, 2> outputs{outLeft, outRight};
    for (std::size_t done = 0; done < frames; done += kChunkFrames) {
        float mono[kChunkFrames];
        const std::size_t chunk = std::min(frames - done, kChunkFrames);
        preDelayToMono(inLeft + done, inRight + done, mono, chunk);
        for (std::size_t channel = 0; channel < 2; ++channel) {
            float* const signal = outputs[channel] + done;
            runCombs(combs[channel], mono, signal, chunk);
            for (AllpassFilter& allpass : allpasses[channel]) {
                allpass.run(signal, chunk);
            }
        }
        crossFeed(outLeft + done, outRight + done, chunk);
    }
}

void Plate70Reverb::crossFeed(float* left, float* right, std::size_t frames) const noexcept {
    const std::size_t count = wholeLanes(frames);
    const Lanes same = broadcast(wet1);
    const Lanes opposite = broadcast(wet2);
    for (std::size_t frame = 0; frame < count; frame += kLanes) {
        const Lanes l = load(left + frame);
        const Lanes r = load(right + frame);
        store(left + frame, same * l + opposite * r);
        store(right + frame, opposite * l + same * r);
    }
    for (std::size_t frame = count; frame < frames; ++frame) {
        const float l = left[frame];
        const float r = right[frame];
        left[frame] = wet1 * l + wet2 * r;
        right[frame] = wet2 * l + wet1 * r;
    }
}

void Plate70Reverb::preDelayToMono(const float* left, const float* right, float* mono,
                                   std::size_t frames) noexcept {
    const float monoGain = inputGain;
    const float combGain = fixedGain;
    const std::size_t length = preDelayLeft.size();
    if (length == 0) {
        for (std::size_t frame = 0; frame < frames; ++frame) {
            mono[frame] = (left[frame] + right[frame]) * monoGain * combGain;
        }
        return;
    }
    const float delayFrames = static_cast<float>(sampleRate) * settings.preDelayMs * 0.001f;
    const float delay =
        delayFrames > 0.0f ? std::min(delayFrames, static_cast<float>(length - 1)) : 0.0f;
    float* const leftLine = preDelayLeft.data();
    float* const rightLine = preDelayRight.data();
    std::size_t write = preDelayWrite;
    std::size_t read = (write + length - static_cast<std::size_t>(delay)) % length;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        // Reads before it writes on purpose: a delay of 0 returns the frame written one whole line
        // length ago, not the current one.
        mono[frame] = (leftLine[read] + rightLine[read]) * monoGain * combGain;
        leftLine[write] = left[frame];
        rightLine[write] = right[frame];
        read = wrapped(read + 1, length);
        write = wrapped(write + 1, length);
    }
    preDelayWrite = write;
}

// Reads until the next wrap never see this pass's writes, which allows four frames at a time.
void Plate70Reverb::runCombs(std::array<CombFilter, 8>& channel, const float* input, float* sum,
                             std::size_t frames) const noexcept {
    const CombCoefficients coefficients{broadcast(1.0f - damp1), broadcast(damp1),
                                        broadcast(feedback)};
    std::size_t frame = 0;
    while (frame < frames) {
        std::size_t count = frames - frame;
        for (const CombFilter& comb : channel) {
            count = std::min(count, comb.buffer.size() - comb.index);
        }
        count = wholeLanes(count);
        runEightCombs(channel.data(), coefficients, input + frame, sum + frame, count);
        frame += count;
        if (frame < frames) { // fewer than four frames until a line wraps or the block ends
            float total = 0.0f;
            for (CombFilter& comb : channel) {
                total += comb.tick(input[frame], damp1, feedback);
            }
            sum[frame++] = total;
        }
    }
}

void Plate70Reverb::setWet(float amount) noexcept {
    wet = amount > 0.0f ? std::min(amount, 1.0f) : 0.0f;
    updateCoefficients();
}

void Plate70Reverb::updateCoefficients() noexcept {
    fixedGain = kFixedGain;
    damp1 = settings.damping * kDampingScale;
    feedback = settings.roomSize * kRoomScale + kRoomOffset;
    wet1 = wet * kWetScale * 0.5f * (1.0f + settings.width);
    wet2 = wet * kWetScale * 0.5f * (1.0f - settings.width);
}

} // namespace lumivarda::dsp
