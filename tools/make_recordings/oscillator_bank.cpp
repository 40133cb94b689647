// SPDX-License-Identifier: MIT
#include "oscillator_bank.h"

#include <algorithm>

namespace recordings {
namespace {

constexpr double kDutyCycle = 0.47;      // not quite square, so even partials are present
constexpr double kFadeStartHz = 17000.0; // partials get weaker from here up to kMaxHz
constexpr double kMaxHz = 20000.0;

double rollOff(double hz) noexcept {
    const double position = (hz - kFadeStartHz) / (kMaxHz - kFadeStartHz);
    return 0.5 + 0.5 * std::cos(kPi * std::clamp(position, 0.0, 1.0));
}

void addPartial(Signal& target, double hz, double gain, double phase) noexcept {
    const double step = 2.0 * kPi * hz / kSampleRateHz;
    const double rotationCos = std::cos(step);
    const double rotationSin = std::sin(step);
    double real = gain * std::cos(phase);
    double imaginary = gain * std::sin(phase);
    for (double& sample : target) {
        sample += real;
        const double nextReal = real * rotationCos - imaginary * rotationSin;
        imaginary = real * rotationSin + imaginary * rotationCos;
        real = nextReal;
    }
}

// phase is that of the first partial, in cycles.
Signal pulseWave(double hz, double phase, std::size_t frames) {
    Signal wave(frames);
    for (int partial = 1; partial * hz < kMaxHz; ++partial) {
        const double gain = 2.0 * std::sin(kPi * partial * kDutyCycle) / (kPi * partial);
        addPartial(wave, partial * hz, gain * rollOff(partial * hz), 2.0 * kPi * partial * phase);
    }
    return wave;
}

} // namespace

Signal oscillatorBank(const BankTuning& tuning, double ringModGain, std::size_t frames) {
    // Cycles; the golden ratio spreads the six starting phases evenly.
    constexpr double kPhaseStep = 0.6180339887498949;
    constexpr std::size_t kPairCount = kBankOscillators / 2;

    std::array<Signal, kBankOscillators> waves;
    for (std::size_t oscillator = 0; oscillator < kBankOscillators; ++oscillator) {
        waves[oscillator] =
            pulseWave(tuning[oscillator], kPhaseStep * static_cast<double>(oscillator + 1), frames);
    }
    Signal bank(frames);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        double sum = 0.0;
        for (std::size_t pair = 0; pair < kPairCount; ++pair) {
            const double a = waves[pair][frame];
            const double b = waves[pair + kPairCount][frame];
            sum += a + b + ringModGain * a * b;
        }
        bank[frame] = sum;
    }
    return bank;
}

} // namespace recordings
