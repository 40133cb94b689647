#include "struck_resonator.h"

#include <algorithm>
#include <complex>
#include <numeric>

namespace recordings {
namespace {

Signal blow(double contactMs) {
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

// A complex one-pole: rotate, shrink, add the blow; the imaginary part is the sound.
// It starts at 0, its decay is exact, and it stays safe while the pitch moves.
void strike(Signal& target, double contactMs, const Mode& mode) {
    constexpr double kGlideOver = 1e-7; // of the pitch; no phase error worth a sine per frame
    constexpr double kRungOut = 1e-11;  // -220 dB

    const Signal pulse = blow(contactMs);
    const double radius = std::exp(-kTimeConstantsPerT60 * 1000.0 / (mode.t60Ms * kSampleRateHz));
    const auto fallOf = [](double tauMs) { return std::exp(-1000.0 / (tauMs * kSampleRateHz)); };
    const double glideFall = fallOf(mode.glideTauMs);
    const double sighFall = fallOf(mode.sighTauMs);
    const double step = 2.0 * kPi * mode.hz / kSampleRateHz;

    std::complex<double> turn = std::polar(radius, step);
    std::complex<double> state = 0.0;
    double glide = mode.glide;
    double sigh = mode.sigh;
    double level = std::abs(mode.gain);
    for (std::size_t frame = 0; frame < target.size() && level > kRungOut; ++frame) {
        if (glide + sigh > kGlideOver) {
            turn = std::polar(radius, step * (1.0 + glide + sigh));
            glide *= glideFall;
            sigh *= sighFall;
        }
        // Written out: the library's product also looks for infinities.
        state = {state.real() * turn.real() - state.imag() * turn.imag(),
                 state.real() * turn.imag() + state.imag() * turn.real()};
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
    Mode answer = mode;
    answer.hz *= 1.0 + side.detune;
    answer.gain *= side.gain;
    strike(target.side, contactMs, answer);
}

} // namespace recordings
