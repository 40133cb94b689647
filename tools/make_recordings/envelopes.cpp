// SPDX-License-Identifier: MIT
#include "envelopes.h"

#include <algorithm>

namespace recordings {

void applyEnvelope(Signal& signal, const std::vector<Decay>& decays) {
    Signal envelope(signal.size());
    for (const Decay& decay : decays) {
        const std::size_t attackFrames = std::min(framesIn(decay.attackMs), envelope.size());
        const double decayPerFrame =
            std::exp(-kTimeConstantsPerT60 * 1000.0 / (decay.t60Ms * kSampleRateHz));
        double decayGain = decay.weight;
        for (std::size_t frame = 0; frame < envelope.size(); ++frame) {
            double attackGain = 1.0;
            if (frame < attackFrames) {
                attackGain = 0.5 - 0.5 * std::cos(kPi * static_cast<double>(frame) /
                                                  static_cast<double>(attackFrames));
            }
            envelope[frame] += attackGain * decayGain;
            decayGain *= decayPerFrame;
        }
    }
    for (std::size_t frame = 0; frame < signal.size(); ++frame) {
        signal[frame] *= envelope[frame];
    }
}

std::vector<Decay> withTransient(const std::vector<Decay>& decays, double amount, double tauMs) {
    std::vector<Decay> result = decays;
    for (const Decay& decay : decays) {
        const double rate = 1.0 / decay.t60Ms + 1.0 / (tauMs * kTimeConstantsPerT60);
        result.push_back({decay.weight * amount, decay.attackMs, 1.0 / rate});
    }
    return result;
}

} // namespace recordings
