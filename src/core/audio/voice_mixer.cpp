// SPDX-License-Identifier: MIT
#include "audio/voice_mixer.h"

#include "audio/lanes.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace percussomatic {

namespace {

using lumivarda::dsp::broadcast;
using lumivarda::dsp::interleave;
using lumivarda::dsp::keepFirst;
using lumivarda::dsp::kLanes;
using lumivarda::dsp::Lanes;
using lumivarda::dsp::load;
using lumivarda::dsp::store;
using lumivarda::dsp::withinMask;

// How the frames of a run lie in memory, and whether their values may be infinite or NaN.
enum class Layout {
    contiguous,  // every second frame of a recording at twice the device rate, like those shipped
    alternating, // all frames of a recording at the device rate
    nonFiniteContiguous,
    nonFiniteAlternating,
};

// Frames of one channel: the first one and every second after it, and those between.
struct Frames {
    const float* here = nullptr;
    const float* next = nullptr;
};

// Consecutive frames of one voice. Memory up to the next multiple of four frames is readable.
struct Run {
    Layout layout = Layout::contiguous;
    Frames left, right;
    std::size_t frames = 0;
    double positionAfter = 0.0;
    bool recordingEnds = false; // after the last frame of the run
};

// Loads four frames of one channel. The position is a whole number, so the interpolation fraction
// is 0: finite frames stay as they are, but an infinite frame turns itself and the frame before it
// into NaN. That is why the non-finite layouts have to interpolate.
template <Layout kLayout>
Lanes loadFrames(const Frames& from, std::size_t frame) noexcept {
    const auto interpolated = [](Lanes here, Lanes next) {
        return here + (next - here) * broadcast(0.0f);
    };
    if constexpr (kLayout == Layout::contiguous) {
        return load(from.here + frame);
    } else if constexpr (kLayout == Layout::nonFiniteContiguous) {
        return interpolated(load(from.here + frame), load(from.next + frame));
    } else {
        const float* const here = from.here + frame / 2;
        const float* const next = from.next + frame / 2;
        if constexpr (kLayout == Layout::alternating) {
            return interleave(here, next);
        }
        return interpolated(interleave(here, next), interleave(next, here + 1));
    }
}

// Number of consecutive silent frames at the end of the run.
template <Layout kLayout>
std::size_t trailingSilence(const Run& run, Lanes threshold) noexcept {
    std::size_t frame = run.frames;
    while (frame > 0) {
        const std::size_t first = (frame - 1) / kLanes * kLanes;
        const unsigned silent = withinMask(threshold, loadFrames<kLayout>(run.left, first),
                                           loadFrames<kLayout>(run.right, first));
        const unsigned loud = ~silent & ((1U << (frame - first)) - 1);
        if (loud != 0) {
            return run.frames - first - static_cast<std::size_t>(std::bit_width(loud));
        }
        frame = first;
    }
    return run.frames;
}

// Counts the silent frames of the run. Returns the number of frames to mix: all of them, or those
// up to and including the frame at which auto-stop ends the voice, which is then inactive.
template <Layout kLayout>
std::size_t countSilence(Voice& voice, const Run& run, const MixSettings& settings) noexcept {
    const Lanes threshold = broadcast(settings.silenceThreshold);
    if (voice.silentFrames + std::uint64_t{run.frames} < settings.holdFrames ||
        voice.playedFrames + std::uint64_t{run.frames} < settings.minFrames) {
        // The voice cannot end within this run, so only the silence at its end matters.
        const auto silent = static_cast<std::uint32_t>(trailingSilence<kLayout>(run, threshold));
        voice.silentFrames = silent == run.frames ? voice.silentFrames + silent : silent;
        voice.playedFrames += static_cast<std::uint32_t>(run.frames);
        return run.frames;
    }
    unsigned silent = 0;
    for (std::size_t frame = 0; frame < run.frames; ++frame, silent >>= 1) {
        if (frame % kLanes == 0) {
            silent = withinMask(threshold, loadFrames<kLayout>(run.left, frame),
                                loadFrames<kLayout>(run.right, frame));
        }
        voice.silentFrames = (silent & 1) != 0 ? voice.silentFrames + 1 : 0;
        ++voice.playedFrames;
        if (voice.playedFrames >= settings.minFrames && voice.silentFrames >= settings.holdFrames) {
            voice.active = false;
            return frame + 1;
        }
    }
    return run.frames;
}

// Lanes from `count` on add 0, which changes no bit because the bus never holds -0.
void addScaled(float* bus, Lanes gain, Lanes frames, std::size_t count) noexcept {
    store(bus, load(bus) + keepFirst(count, gain * frames));
}

template <Layout kLayout, bool kHasSend>
void addToBus(const Run& run, std::size_t frames, float gain, float sendGain, std::size_t busFrame,
              Prefetch prefetch, MixBus& bus) noexcept {
    const Lanes dryGain = broadcast(gain);
    const Lanes wetGain = broadcast(sendGain);
    const auto addFour = [&](std::size_t frame, std::size_t count) {
        const Lanes left = loadFrames<kLayout>(run.left, frame);
        const Lanes right = loadFrames<kLayout>(run.right, frame);
        addScaled(bus.left + busFrame + frame, dryGain, left, count);
        addScaled(bus.right + busFrame + frame, dryGain, right, count);
        if constexpr (kHasSend) {
            addScaled(bus.sendLeft + busFrame + frame, wetGain, left, count);
            addScaled(bus.sendRight + busFrame + frame, wetGain, right, count);
        }
    };
    std::size_t frame = 0;
    for (; frame + 2 * kLanes <= frames; frame += 2 * kLanes) {
        __builtin_prefetch(reinterpret_cast<const void*>(prefetch.left));
        __builtin_prefetch(reinterpret_cast<const void*>(prefetch.right));
        prefetch.left += prefetch.bytesPerEightFrames;
        prefetch.right += prefetch.bytesPerEightFrames;
        addFour(frame, kLanes);
        addFour(frame + kLanes, kLanes);
    }
    for (; frame < frames; frame += kLanes) {
        addFour(frame, std::min(kLanes, frames - frame));
    }
}

// Memory for frames that have to be interpolated one by one.
struct Scratch {
    alignas(16) float left[kBusFrames];
    alignas(16) float right[kBusFrames];
};

// The next frames if they can be read from the recording without interpolation, a multiple of four.
// None if the position lies between two frames, the recording's rate is not one or two times the
// device rate, or the end of the recording is near.
Run directRun(double position, const Sample& sample, double increment,
              std::size_t frames) noexcept {
    Run run;
    const auto length = static_cast<std::int64_t>(sample.left.size());
    const auto first = static_cast<std::int64_t>(position);
    if ((increment != 1.0 && increment != 2.0) || static_cast<double>(first) != position ||
        first >= length) {
        return run;
    }
    const std::size_t step = increment == 2.0 ? 2 : 1;
    // Interpolation reads the frame after each, so the last frame is left to interpolatedRun().
    const std::size_t available = static_cast<std::size_t>(length - 1 - first) / step;
    if (step == 2) {
        run.layout = sample.finite ? Layout::contiguous : Layout::nonFiniteContiguous;
    } else {
        run.layout = sample.finite ? Layout::alternating : Layout::nonFiniteAlternating;
    }
    const auto framesFrom = [frame = static_cast<std::size_t>(first)](const Plane& plane) {
        return Frames{plane.everySecondFrom(frame), plane.everySecondFrom(frame + 1)};
    };
    run.left = framesFrom(sample.left);
    run.right = framesFrom(sample.right);
    run.frames = std::min(frames, available) / kLanes * kLanes;
    run.positionAfter = position + increment * static_cast<double>(run.frames);
    return run;
}

// The next frames at any position and rate ratio, up to the end of the recording.
Run interpolatedRun(double position, const Sample& sample, double increment, std::size_t frames,
                    Scratch& scratch) noexcept {
    // Signed, because processors convert between double and signed integers faster.
    const auto length = static_cast<std::int64_t>(sample.left.size());
    const auto interpolated = [](const Plane& plane, std::int64_t here, std::int64_t next,
                                 float fraction) {
        const float value = plane[static_cast<std::size_t>(here)];
        return value + (plane[static_cast<std::size_t>(next)] - value) * fraction;
    };
    Run run{.left = {.here = scratch.left}, .right = {.here = scratch.right}};
    for (; run.frames < frames; ++run.frames) {
        const auto here = static_cast<std::int64_t>(position);
        if (here >= length) {
            run.recordingEnds = true;
            break;
        }
        const auto fraction = static_cast<float>(position - static_cast<double>(here));
        const std::int64_t next = std::min(length - 1, here + 1);
        scratch.left[run.frames] = interpolated(sample.left, here, next, fraction);
        scratch.right[run.frames] = interpolated(sample.right, here, next, fraction);
        position += increment;
    }
    run.positionAfter = position;
    return run;
}

// What is the same for all runs of one voice.
struct Mix {
    const MixSettings& settings;
    std::optional<float> sendGain;
    const Prefetch& prefetch;
    MixBus& bus;
    double increment;
};

template <Layout kLayout>
void mixRun(Voice& voice, const Run& run, std::size_t busFrame, const Mix& mix) noexcept {
    const std::size_t frames =
        mix.settings.autoStop ? countSilence<kLayout>(voice, run, mix.settings) : run.frames;
    if (mix.sendGain) {
        addToBus<kLayout, true>(run, frames, voice.gain, *mix.sendGain, busFrame, mix.prefetch,
                                mix.bus);
    } else {
        addToBus<kLayout, false>(run, frames, voice.gain, 0.0f, busFrame, mix.prefetch, mix.bus);
    }
    if (voice.active) {
        voice.position = run.positionAfter;
        voice.active = !run.recordingEnds;
        return;
    }
    // Auto-stop leaves the voice on its last frame. Repeated additions, because a product would
    // round differently.
    for (std::size_t frame = 1; frame < frames; ++frame) {
        voice.position += mix.increment;
    }
}

void mixDirectRun(Voice& voice, const Run& run, const Mix& mix) noexcept {
    switch (run.layout) {
    case Layout::contiguous:
        return mixRun<Layout::contiguous>(voice, run, 0, mix);
    case Layout::alternating:
        return mixRun<Layout::alternating>(voice, run, 0, mix);
    case Layout::nonFiniteContiguous:
        return mixRun<Layout::nonFiniteContiguous>(voice, run, 0, mix);
    case Layout::nonFiniteAlternating:
        return mixRun<Layout::nonFiniteAlternating>(voice, run, 0, mix);
    }
}

double incrementOf(const Sample& sample, std::uint32_t sampleRate) noexcept {
    return static_cast<double>(sample.sampleRate) / static_cast<double>(sampleRate);
}

} // namespace

Prefetch prefetchOf(const Voice& voice, const Sample& sample, std::uint32_t sampleRate) noexcept {
    const auto frame = static_cast<std::size_t>(voice.position);
    return {reinterpret_cast<std::uintptr_t>(sample.left.everySecondFrom(frame)),
            reinterpret_cast<std::uintptr_t>(sample.right.everySecondFrom(frame)),
            static_cast<std::uintptr_t>(incrementOf(sample, sampleRate) * 4.0) * sizeof(float)};
}

void mixVoice(Voice& voice, const Sample& sample, std::optional<float> sendGain,
              const MixSettings& settings, const Prefetch& prefetch, MixBus& bus) noexcept {
    const Mix mix{settings, sendGain, prefetch, bus, incrementOf(sample, settings.sampleRate)};
    const Run run = directRun(voice.position, sample, mix.increment, settings.frames);
    if (run.frames > 0) {
        mixDirectRun(voice, run, mix);
    }
    if (voice.active && run.frames < settings.frames) {
        Scratch scratch;
        const Run rest = interpolatedRun(voice.position, sample, mix.increment,
                                         settings.frames - run.frames, scratch);
        mixRun<Layout::contiguous>(voice, rest, run.frames, mix);
    }
}

} // namespace percussomatic
