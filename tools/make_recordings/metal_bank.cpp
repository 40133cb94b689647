#include "metal_bank.h"

#include <algorithm>

namespace recordings {
namespace {

constexpr double kDuty = 0.47;          // not quite square: a little of every even partial
constexpr double kFullUpToHz = 17000.0; // partials fade out from here
constexpr double kHighestHz = 20000.0;

double topFade(double hz) noexcept {
    const double position = (hz - kFullUpToHz) / (kHighestHz - kFullUpToHz);
    return 0.5 + 0.5 * std::cos(kPi * std::clamp(position, 0.0, 1.0));
}

void addPartial(Signal& target, double hz, double gain, double phase) noexcept {
    const double step = 2.0 * kPi * hz / kSampleRateHz;
    const double turnCos = std::cos(step);
    const double turnSin = std::sin(step);
    double re = gain * std::cos(phase);
    double im = gain * std::sin(phase);
    for (double& sample : target) {
        sample += re;
        const double next = re * turnCos - im * turnSin;
        im = re * turnSin + im * turnCos;
        re = next;
    }
}

// phase is that of the first partial, in turns.
Signal pulseWave(double hz, double phase, std::size_t frames) {
    Signal wave(frames);
    for (int partial = 1; partial * hz < kHighestHz; ++partial) {
        const double gain = 2.0 * std::sin(kPi * partial * kDuty) / (kPi * partial);
        addPartial(wave, partial * hz, gain * topFade(partial * hz), 2.0 * kPi * partial * phase);
    }
    return wave;
}

} // namespace

Signal metalBank(const BankTuning& tuning, double ringGain, std::size_t frames) {
    constexpr double kPhaseStep = 0.6180339887498949; // turns; spreads the six starts evenly
    constexpr std::size_t kPartner = kBankOscillators / 2;

    std::array<Signal, kBankOscillators> waves;
    for (std::size_t oscillator = 0; oscillator < kBankOscillators; ++oscillator) {
        waves[oscillator] =
            pulseWave(tuning[oscillator], kPhaseStep * static_cast<double>(oscillator + 1), frames);
    }
    Signal bank(frames);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        double sum = 0.0;
        for (std::size_t lower = 0; lower < kPartner; ++lower) {
            const double a = waves[lower][frame];
            const double b = waves[lower + kPartner][frame];
            sum += a + b + ringGain * a * b;
        }
        bank[frame] = sum;
    }
    return bank;
}

} // namespace recordings
