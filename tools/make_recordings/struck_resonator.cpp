// SPDX-License-Identifier: MIT
#include "struck_resonator.h"

#include <algorithm>
#include <complex>
#include <numeric>

namespace recordings {
namespace {

// Raised cosine of unit area.
Signal contactPulse(double contactMs) {
    Signal pulse(std::max<std::size_t>(framesIn(contactMs), 1));
    for (std::size_t frame = 0; frame < pulse.size(); ++frame) {
        const double phase = (static_cast<double>(frame) + 0.5) / static_cast<double>(pulse.size());
        pulse[frame] = 0.5 - 0.5 * std::cos(2.0 * kPi * phase);
    }
    const double area = std::accumulate(pulse.begin(), pulse.end(), 0.0);
    for (double& sample : pulse) {
        sample /= area;
    }
    return pulse;
}

} // namespace

// A complex one-pole filter: each frame rotates and shrinks the state and adds the pulse;
// the output is the imaginary part. It starts at 0, decays at exactly the given rate and
// stays stable while the pitch glides.
void strike(Signal& target, double contactMs, const Mode& mode) {
    constexpr double kMinGlide = 1e-7;  // relative; smaller pitch shifts are ignored
    constexpr double kMinLevel = 1e-11; // -220 dB

    const Signal pulse = contactPulse(contactMs);
    const double radius = std::exp(-kTimeConstantsPerT60 * 1000.0 / (mode.t60Ms * kSampleRateHz));
    const auto decayPerFrame = [](double tauMs) {
        return std::exp(-1000.0 / (tauMs * kSampleRateHz));
    };
    const double glideDecay = decayPerFrame(mode.glideTauMs);
    const double slowGlideDecay = decayPerFrame(mode.slowGlideTauMs);
    const double step = 2.0 * kPi * mode.hz / kSampleRateHz;

    std::complex<double> rotation = std::polar(radius, step);
    std::complex<double> state = 0.0;
    double glide = mode.glide;
    double slowGlide = mode.slowGlide;
    double level = std::abs(mode.gain);
    for (std::size_t frame = 0; frame < target.size() && level > kMinLevel; ++frame) {
        if (glide + slowGlide > kMinGlide) {
            rotation = std::polar(radius, step * (1.0 + glide + slowGlide));
            glide *= glideDecay;
            slowGlide *= slowGlideDecay;
        }
        // Written out, because operator* of std::complex also checks for NaN and infinities.
        state = {state.real() * rotation.real() - state.imag() * rotation.imag(),
                 state.real() * rotation.imag() + state.imag() * rotation.real()};
        if (frame < pulse.size()) {
            state += mode.gain * pulse[frame];
        } else {
            level *= radius;
        }
        target[frame] += state.imag();
    }
}

void strike(Sound& target, double contactMs, const Mode& mode, const SideTuning& side) {
    strike(target.mid, contactMs, mode);
    Mode sideMode = mode;
    sideMode.hz *= 1.0 + side.detune;
    sideMode.gain *= side.gain;
    strike(target.side, contactMs, sideMode);
}

} // namespace recordings
