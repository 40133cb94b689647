// SPDX-License-Identifier: MIT
#include "finishing.h"

#include "filters.h"
#include "noise.h"
#include "wave_file.h"

#include <algorithm>

namespace recordings {
namespace {

// The mixer clips hard, so four recordings triggered together must stay below full
// scale. All recordings get the same trim; their balance is set by their peak levels.
constexpr double kKitTrimDb = -6.0;

constexpr std::size_t kFadeInFrames = 24; // removes the band limit's pre-ringing at frame 0
constexpr std::uint64_t kDitherSeed = 0x64697468;

double peakOf(const Signal& signal) noexcept {
    double peak = 0.0;
    for (const double sample : signal) {
        peak = std::max(peak, std::abs(sample));
    }
    return peak;
}

// tanh adds third-order products, up to 60 kHz for partials below 20 kHz. Those that alias at
// this sample rate land above 36 kHz, where the band limit removes them. Only the mid is
// clipped: the side is too quiet for it to matter.
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
    const auto raisedCosine = [](std::size_t frame, std::size_t frames) {
        return 0.5 - 0.5 * std::cos(kPi * static_cast<double>(frame) / static_cast<double>(frames));
    };
    for (std::size_t frame = 0; frame < std::min(kFadeInFrames, signal.size()); ++frame) {
        signal[frame] *= raisedCosine(frame, kFadeInFrames);
    }
    for (std::size_t frame = 0; frame < std::min(fadeOutFrames, signal.size()); ++frame) {
        signal[signal.size() - 1 - frame] *= raisedCosine(frame, fadeOutFrames);
    }
}

// Rounds to 24 bits with triangular dither of +-1 quantisation step. Samples within one
// step of zero get no dither, because the end of a recording must be exact zeros.
std::int32_t quantise(double sample, Noise& dither) noexcept {
    const double steps = sample * kFullScale;
    const double noise = 0.5 * (dither.next() + dither.next());
    const double dithered = std::abs(steps) > 1.0 ? steps + noise : steps;
    return static_cast<std::int32_t>(std::lround(dithered));
}

} // namespace

std::vector<std::int32_t> finish(Sound sound, const FinishSettings& settings, std::size_t frames) {
    softClip(sound.mid, settings.clipDrive, settings.clipBias);
    for (Signal* channel : {&sound.mid, &sound.side}) {
        filter(*channel, {highPass(settings.highPassHz)});
        bandLimit(*channel);
        fade(*channel, framesIn(settings.endFadeMs));
    }

    Signal left = sound.mid;
    Signal right = sound.mid;
    addScaled(left, sound.side, 1.0);
    addScaled(right, sound.side, -1.0);
    const double gain =
        gainFromDb(settings.peakDb + kKitTrimDb) / std::max(peakOf(left), peakOf(right));

    Noise dither(kDitherSeed);
    std::vector<std::int32_t> samples(2 * frames);
    for (std::size_t frame = 0; frame < std::min(frames, left.size()); ++frame) {
        samples[2 * frame] = quantise(gain * left[frame], dither);
        samples[2 * frame + 1] = quantise(gain * right[frame], dither);
    }
    return samples;
}

} // namespace recordings
