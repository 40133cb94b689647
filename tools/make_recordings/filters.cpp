// SPDX-License-Identifier: MIT
#include "filters.h"

#include <algorithm>
#include <array>

namespace recordings {
namespace {

// State-variable filter with trapezoidal integration: stable, and its cutoff is exact up
// to half the sample rate.
void applyStage(Signal& signal, const FilterStage& stage) noexcept {
    const double g = std::tan(kPi * stage.hz / kSampleRateHz);
    const double k = 1.0 / stage.q;
    const double a1 = 1.0 / (1.0 + g * (g + k));
    const double a2 = g * a1;
    const double a3 = g * a2;
    double band = 0.0; // state of the first integrator
    double low = 0.0;  // state of the second integrator
    for (double& sample : signal) {
        const double v3 = sample - low;
        const double v1 = a1 * band + a2 * v3;
        const double v2 = low + a2 * band + a3 * v3;
        band = 2.0 * v1 - band;
        low = 2.0 * v2 - low;
        if (stage.response == Response::lowPass) {
            sample = v2;
        } else if (stage.response == Response::bandPass) {
            sample = k * v1;
        } else {
            sample = sample - k * v1 - v2;
        }
    }
}

// Modified Bessel function of the first kind, order 0, by its power series.
double besselI0(double x) noexcept {
    double term = 1.0;
    double sum = 1.0;
    for (int order = 1; order < 60; ++order) {
        const double factor = x / (2.0 * order);
        term *= factor * factor;
        sum += term;
    }
    return sum;
}

constexpr std::size_t kTaps = 2 * kBandLimitDelayFrames + 1;

// Flat up to 19.5 kHz, -6 dB at 21.5 kHz, below -100 dB from 23.4 kHz.
std::array<double, kTaps> bandLimitTaps() noexcept {
    constexpr double kCutoffHz = 21500.0;
    constexpr double kKaiserBeta = 11.2;
    std::array<double, kTaps> taps{};
    double sum = 0.0;
    for (std::size_t tap = 0; tap < kTaps; ++tap) {
        const double offset = static_cast<double>(tap) - static_cast<double>(kBandLimitDelayFrames);
        const double position = offset / static_cast<double>(kBandLimitDelayFrames);
        const double window = besselI0(kKaiserBeta * std::sqrt(1.0 - position * position));
        const double x = 2.0 * kCutoffHz / kSampleRateHz * offset;
        const double sinc = tap == kBandLimitDelayFrames ? 1.0 : std::sin(kPi * x) / (kPi * x);
        taps[tap] = window * sinc;
        sum += taps[tap];
    }
    for (double& tap : taps) {
        tap /= sum;
    }
    return taps;
}

} // namespace

void filter(Signal& signal, const std::vector<FilterStage>& stages) {
    constexpr auto kSteepQ =
        std::to_array<double>({0.5411961001461969, 1.3065629648763766}); // 4-pole Butterworth
    for (const FilterStage& stage : stages) {
        if (stage.response == Response::steepHighPass) {
            for (const double q : kSteepQ) {
                applyStage(signal, {Response::highPass, stage.hz, q});
            }
        } else {
            applyStage(signal, stage);
        }
    }
}

void bandLimit(Signal& signal) {
    static const std::array<double, kTaps> taps = bandLimitTaps();
    Signal limited(signal.size());
    for (std::size_t frame = 0; frame < signal.size(); ++frame) {
        const std::size_t tapCount = std::min(kTaps, frame + 1);
        double sum = 0.0;
        for (std::size_t tap = 0; tap < tapCount; ++tap) {
            sum += taps[tap] * signal[frame - tap];
        }
        limited[frame] = sum;
    }
    signal = std::move(limited);
}

} // namespace recordings
