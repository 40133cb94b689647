#include "finishing.h"

#include "filters.h"
#include "noise.h"
#include "wave_file.h"

#include <algorithm>

namespace recordings {
namespace {

// The mixer clips hard, so four recordings started together have to fit under full
// scale. The kit is lowered as a whole: its balance is in the peaks of the table.
constexpr double kKitTrimDb = -6.0;

constexpr std::size_t kFadeInFrames = 24; // takes the pre-ring of the band limit off frame 0
constexpr std::uint64_t kDitherSeed = 0x64697468;

double peakOf(const Signal& signal) noexcept {
    double peak = 0.0;
    for (const double sample : signal) {
        peak = std::max(peak, std::abs(sample));
    }
    return peak;
}

// tanh makes third-order partials of what lies below 20 kHz; those that fold at this
// rate land above 36 kHz, where the band limit removes them. Only the mid goes
// through: the side is too small to bend anything.
void softClip(Signal& signal, double drive, double bias) noexcept {
    const double peak = peakOf(signal);
    if (drive <= 0.0 || peak <= 0.0) {
        return;
    }
    for (double& sample : signal) {
        sample = peak / drive * (std::tanh(drive * sample / peak + bias) - std::tanh(bias));
    }
}

void fade(Signal& signal, std::size_t fadeOutFrames) noexcept {
    const auto rise = [](std::size_t frame, std::size_t frames) {
        return 0.5 - 0.5 * std::cos(kPi * static_cast<double>(frame) / static_cast<double>(frames));
    };
    for (std::size_t frame = 0; frame < std::min(kFadeInFrames, signal.size()); ++frame) {
        signal[frame] *= rise(frame, kFadeInFrames);
    }
    for (std::size_t frame = 0; frame < std::min(fadeOutFrames, signal.size()); ++frame) {
        signal[signal.size() - 1 - frame] *= rise(frame, fadeOutFrames);
    }
}

// Triangular dither of one step each way, but none on samples that are silence
// already: the end of a recording has to be exact zeros.
std::int32_t quantised(double sample, Noise& dither) noexcept {
    const double steps = sample * kFullScale;
    const double noise = 0.5 * (dither.next() + dither.next());
    const double dithered = std::abs(steps) > 1.0 ? steps + noise : steps;
    return static_cast<std::int32_t>(std::lround(dithered));
}

} // namespace

std::vector<std::int32_t> finish(Sound sound, const Finish& how, std::size_t frames) {
    softClip(sound.mid, how.clipDrive, how.clipBias);
    for (Signal* channel : {&sound.mid, &sound.side}) {
        filter(*channel, {highPass(how.lowCutHz)});
        bandLimit(*channel);
        fade(*channel, framesIn(how.endFadeMs));
    }

    Signal left = sound.mid;
    Signal right = sound.mid;
    addScaled(left, sound.side, 1.0);
    addScaled(right, sound.side, -1.0);
    const double gain = gainFromDb(how.peakDb + kKitTrimDb) / std::max(peakOf(left), peakOf(right));

    Noise dither(kDitherSeed);
    std::vector<std::int32_t> samples(2 * frames);
    for (std::size_t frame = 0; frame < std::min(frames, left.size()); ++frame) {
        samples[2 * frame] = quantised(gain * left[frame], dither);
        samples[2 * frame + 1] = quantised(gain * right[frame], dither);
    }
    return samples;
}

} // namespace recordings
