#include "envelopes.h"

#include <algorithm>

namespace recordings {

void shape(Signal& signal, const std::vector<Decay>& decays) {
    Signal level(signal.size());
    for (const Decay& decay : decays) {
        const std::size_t attackFrames = std::min(framesIn(decay.attackMs), level.size());
        const double perFrame =
            std::exp(-kTimeConstantsPerT60 * 1000.0 / (decay.t60Ms * kSampleRateHz));
        double fall = decay.weight;
        for (std::size_t frame = 0; frame < level.size(); ++frame) {
            double rise = 1.0;
            if (frame < attackFrames) {
                rise = 0.5 - 0.5 * std::cos(kPi * static_cast<double>(frame) /
                                            static_cast<double>(attackFrames));
            }
            level[frame] += rise * fall;
            fall *= perFrame;
        }
    }
    for (std::size_t frame = 0; frame < signal.size(); ++frame) {
        signal[frame] *= level[frame];
    }
}

std::vector<Decay> bent(const std::vector<Decay>& decays, double amount, double tauMs) {
    std::vector<Decay> product = decays;
    for (const Decay& decay : decays) {
        const double rate = 1.0 / decay.t60Ms + 1.0 / (tauMs * kTimeConstantsPerT60);
        product.push_back({decay.weight * amount, decay.attackMs, 1.0 / rate});
    }
    return product;
}

} // namespace recordings
