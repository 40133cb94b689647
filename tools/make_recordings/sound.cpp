// SPDX-License-Identifier: MIT
#include "sound.h"

#include <algorithm>
#include <numeric>

namespace recordings {

void addScaled(Signal& target, const Signal& source, double gain, std::size_t startFrame) {
    if (startFrame >= target.size()) {
        return;
    }
    const std::size_t count = std::min(source.size(), target.size() - startFrame);
    for (std::size_t frame = 0; frame < count; ++frame) {
        target[startFrame + frame] += gain * source[frame];
    }
}

void addScaled(Sound& target, const Sound& source, double gain, std::size_t startFrame) {
    addScaled(target.mid, source.mid, gain, startFrame);
    addScaled(target.side, source.side, gain, startFrame);
}

void scaleToUnitRms(Signal& signal) noexcept {
    const double energy = std::inner_product(signal.begin(), signal.end(), signal.begin(), 0.0);
    if (energy <= 0.0) {
        return;
    }
    const double gain = std::sqrt(static_cast<double>(signal.size()) / energy);
    for (double& sample : signal) {
        sample *= gain;
    }
}

} // namespace recordings
