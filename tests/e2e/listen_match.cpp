#include "listen_match.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace listen {

namespace {

constexpr std::size_t kCaptureRateHz = 48000;
constexpr std::size_t kAttackFrames = 256; // 5 ms, within every recording's first swing
constexpr std::size_t kApartFrames = 960;  // 20 ms
constexpr double kLeastLikeness = 0.8;     // a hit over the tail of another stays above 0.9
constexpr double kLeastGain = 0.5;         // of the gain looked for
constexpr double kOnset = 0.01;            // of the peak
constexpr double kPcmScale = 32767.0;

void difference(std::vector<double>& values) {
    std::adjacent_difference(values.begin(), values.end(), values.begin());
}

// As the engine plays it: every second frame of a recording at 96 kHz.
std::vector<double> mono(const percussomatic::Sample& recording) {
    std::vector<double> values;
    const std::size_t stride = std::max<std::size_t>(1, recording.sampleRate / kCaptureRateHz);
    for (std::size_t frame = 0; frame < recording.left.size(); frame += stride) {
        values.push_back((recording.left[frame] + recording.right[frame]) * kPcmScale);
    }
    return values;
}

std::vector<double> mono(std::span<const std::int16_t> capture) {
    std::vector<double> values(capture.size() / 2);
    for (std::size_t frame = 0; frame < values.size(); ++frame) {
        values[frame] = capture[2 * frame] + capture[2 * frame + 1];
    }
    return values;
}

std::size_t onsetOf(const std::vector<double>& values) {
    double peak = 0.0;
    for (const double value : values) {
        peak = std::max(peak, std::fabs(value));
    }
    const auto onset = std::find_if(values.begin(), values.end(), [peak](double value) {
        return std::fabs(value) > kOnset * peak;
    });
    return static_cast<std::size_t>(onset - values.begin());
}

} // namespace

std::vector<Found> findHits(std::span<const std::int16_t> capture,
                            const percussomatic::Sample& recording, double gain) {
    std::vector<double> attack = mono(recording);
    const std::size_t onset = onsetOf(attack);
    std::vector<double> heard = mono(capture);
    for (int order = 0; order < 2; ++order) {
        difference(attack);
        difference(heard);
    }
    if (attack.size() < onset + kAttackFrames || heard.size() < onset + kAttackFrames) {
        return {};
    }
    const double* edge = attack.data() + onset;
    const double energy = std::inner_product(edge, edge + kAttackFrames, edge, 0.0);

    std::vector<Found> hits;
    for (std::size_t frame = 0; frame + onset + kAttackFrames <= heard.size(); ++frame) {
        const double* window = heard.data() + frame + onset;
        const double product = std::inner_product(edge, edge + kAttackFrames, window, 0.0);
        const Found found{
            .frame = frame,
            .likeness =
                product /
                std::sqrt(energy * std::inner_product(window, window + kAttackFrames, window, 1.0)),
            .gain = product / energy};
        if (found.likeness < kLeastLikeness || found.gain < kLeastGain * gain) {
            continue;
        }
        if (hits.empty() || frame - hits.back().frame >= kApartFrames) {
            hits.push_back(found);
        } else if (found.likeness > hits.back().likeness) {
            hits.back() = found;
        }
    }
    return hits;
}

} // namespace listen
