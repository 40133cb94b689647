#include "audio/voice_mixer.h"

#include "audio/lanes.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace percussomatic {

namespace {

using lumivarda::dsp::allLanes;
using lumivarda::dsp::bothWithin;
using lumivarda::dsp::evenOf;
using lumivarda::dsp::firstLanes;
using lumivarda::dsp::kLanes;
using lumivarda::dsp::Lanes;
using lumivarda::dsp::load;
using lumivarda::dsp::oddOf;
using lumivarda::dsp::store;

// How the frames of a part lie in memory. "Unknown": a value may be infinite or NaN.
enum class Layout {
    Contiguous,
    Stride2, // every second frame: a recording at twice the engine's rate, as shipped
    UnknownContiguous,
    UnknownStride2,
};

// Frames of one voice in a row. All of them can be read in fours.
struct Part {
    Layout layout = Layout::Contiguous;
    const float* left = nullptr;
    const float* right = nullptr;
    std::size_t frames = 0;
    double positionAfter = 0.0;
    bool recordingEnds = false; // before the frame after the last
};

// Four frames of one channel. On whole frames the fraction is 0, which leaves a finite
// frame as it is, but makes a NaN of an infinite one and of the frame before that.
template <Layout kLayout>
Lanes fourFrames(const float* plane, std::size_t frame) noexcept {
    const auto interpolated = [](Lanes here, Lanes next) {
        return here + (next - here) * allLanes(0.0f);
    };
    if constexpr (kLayout == Layout::Contiguous) {
        return load(plane + frame);
    } else if constexpr (kLayout == Layout::UnknownContiguous) {
        return interpolated(load(plane + frame), load(plane + frame + 1));
    } else {
        const Lanes low = load(plane + 2 * frame);
        const Lanes high = load(plane + 2 * frame + kLanes);
        if constexpr (kLayout == Layout::Stride2) {
            return evenOf(low, high);
        }
        return interpolated(evenOf(low, high), oddOf(low, high));
    }
}

// Consecutive silent frames at the end of the part.
template <Layout kLayout>
std::size_t trailingSilence(const Part& part, Lanes threshold) noexcept {
    std::size_t frame = part.frames;
    while (frame > 0) {
        const std::size_t first = (frame - 1) / kLanes * kLanes;
        const unsigned silent = bothWithin(threshold, fourFrames<kLayout>(part.left, first),
                                           fourFrames<kLayout>(part.right, first));
        const unsigned loud = ~silent & ((1U << (frame - first)) - 1);
        if (loud != 0) {
            return part.frames - first - static_cast<std::size_t>(std::bit_width(loud));
        }
        frame = first;
    }
    return part.frames;
}

// Counts silence over the part. Returns how many of its frames sound; the voice is
// inactive afterwards if the last of them ended it.
template <Layout kLayout>
std::size_t countSilence(Voice& voice, const Part& part, const MixSettings& settings) noexcept {
    const Lanes threshold = allLanes(settings.silenceThreshold);
    if (voice.silentFrames + std::uint64_t{part.frames} < settings.holdFrames ||
        voice.playedFrames + std::uint64_t{part.frames} < settings.minFrames) {
        // Nothing here can end the voice, and only the last sounding frame matters.
        const auto silent = static_cast<std::uint32_t>(trailingSilence<kLayout>(part, threshold));
        voice.silentFrames = silent == part.frames ? voice.silentFrames + silent : silent;
        voice.playedFrames += static_cast<std::uint32_t>(part.frames);
        return part.frames;
    }
    unsigned silent = 0;
    for (std::size_t frame = 0; frame < part.frames; ++frame, silent >>= 1) {
        if (frame % kLanes == 0) {
            silent = bothWithin(threshold, fourFrames<kLayout>(part.left, frame),
                                fourFrames<kLayout>(part.right, frame));
        }
        voice.silentFrames = (silent & 1) != 0 ? voice.silentFrames + 1 : 0;
        ++voice.playedFrames;
        if (voice.playedFrames >= settings.minFrames && voice.silentFrames >= settings.holdFrames) {
            voice.active = false;
            return frame + 1;
        }
    }
    return part.frames;
}

// The bus is never -0, so adding the 0 of the lanes left out changes nothing.
void addScaled(float* bus, Lanes gain, Lanes frames, std::size_t count) noexcept {
    store(bus, load(bus) + firstLanes(count, gain * frames));
}

template <Layout kLayout, bool kSending>
void addToBus(const Part& part, std::size_t frames, float gain, float sendGain, std::size_t at,
              Prefetch prefetch, MixBus& bus) noexcept {
    const Lanes dryGain = allLanes(gain);
    const Lanes wetGain = allLanes(sendGain);
    const auto addFour = [&](std::size_t frame, std::size_t count) {
        const Lanes left = fourFrames<kLayout>(part.left, frame);
        const Lanes right = fourFrames<kLayout>(part.right, frame);
        addScaled(bus.left + at + frame, dryGain, left, count);
        addScaled(bus.right + at + frame, dryGain, right, count);
        if constexpr (kSending) {
            addScaled(bus.sendLeft + at + frame, wetGain, left, count);
            addScaled(bus.sendRight + at + frame, wetGain, right, count);
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

// Room for the frames of a part that have to be worked out one by one.
struct Scratch {
    alignas(16) float left[kBusFrames];
    alignas(16) float right[kBusFrames];
};

// The next frames that lie in the recording as they are wanted; none when the voice is
// between frames, the rates have another ratio or the recording's end is near.
Part readablePart(double position, const Sample& sample, double increment,
                  std::size_t frames) noexcept {
    Part part;
    const auto length = static_cast<std::int64_t>(sample.left.size());
    const auto first = static_cast<std::int64_t>(position);
    if ((increment != 1.0 && increment != 2.0) || static_cast<double>(first) != position ||
        first >= length) {
        return part;
    }
    const std::size_t step = increment == 2.0 ? 2 : 1;
    // Each frame is interpolated with the one after it, so the last cannot be among them.
    const std::size_t inReach = static_cast<std::size_t>(length - 1 - first) / step;
    if (step == 2) {
        part.layout = sample.finite ? Layout::Stride2 : Layout::UnknownStride2;
    } else {
        part.layout = sample.finite ? Layout::Contiguous : Layout::UnknownContiguous;
    }
    part.left = sample.left.data() + first;
    part.right = sample.right.data() + first;
    part.frames = std::min(frames, inReach) / kLanes * kLanes;
    part.positionAfter = position + increment * static_cast<double>(part.frames);
    return part;
}

// Whatever the position and the ratio, up to the recording's end.
Part interpolatedPart(double position, const Sample& sample, double increment, std::size_t frames,
                      Scratch& scratch) noexcept {
    const float* const left = sample.left.data();
    const float* const right = sample.right.data();
    // Signed, because processors convert doubles to and from signed integers faster.
    const auto length = static_cast<std::int64_t>(sample.left.size());
    Part part{.left = scratch.left, .right = scratch.right};
    for (; part.frames < frames; ++part.frames) {
        const auto here = static_cast<std::int64_t>(position);
        if (here >= length) {
            part.recordingEnds = true;
            break;
        }
        const auto fraction = static_cast<float>(position - static_cast<double>(here));
        const std::int64_t next = std::min(length - 1, here + 1);
        scratch.left[part.frames] = left[here] + (left[next] - left[here]) * fraction;
        scratch.right[part.frames] = right[here] + (right[next] - right[here]) * fraction;
        position += increment;
    }
    part.positionAfter = position;
    return part;
}

struct Mix {
    const MixSettings& settings;
    std::optional<float> sendGain;
    const Prefetch& prefetch;
    MixBus& bus;
    double increment;
};

template <Layout kLayout>
void mixPart(Voice& voice, const Part& part, std::size_t at, const Mix& mix) noexcept {
    const std::size_t sounding =
        mix.settings.autoStop ? countSilence<kLayout>(voice, part, mix.settings) : part.frames;
    if (mix.sendGain) {
        addToBus<kLayout, true>(part, sounding, voice.gain, *mix.sendGain, at, mix.prefetch,
                                mix.bus);
    } else {
        addToBus<kLayout, false>(part, sounding, voice.gain, 0.0f, at, mix.prefetch, mix.bus);
    }
    if (voice.active) {
        voice.position = part.positionAfter;
        voice.active = !part.recordingEnds;
        return;
    }
    // Ended by silence: it stays on its last frame. Added up as always, for the rounding.
    for (std::size_t frame = 1; frame < sounding; ++frame) {
        voice.position += mix.increment;
    }
}

void mixReadable(Voice& voice, const Part& part, const Mix& mix) noexcept {
    switch (part.layout) {
    case Layout::Contiguous:
        return mixPart<Layout::Contiguous>(voice, part, 0, mix);
    case Layout::Stride2:
        return mixPart<Layout::Stride2>(voice, part, 0, mix);
    case Layout::UnknownContiguous:
        return mixPart<Layout::UnknownContiguous>(voice, part, 0, mix);
    case Layout::UnknownStride2:
        return mixPart<Layout::UnknownStride2>(voice, part, 0, mix);
    }
}

double incrementOf(const Sample& sample, std::uint32_t sampleRate) noexcept {
    return static_cast<double>(sample.sampleRate) / static_cast<double>(sampleRate);
}

} // namespace

Prefetch prefetchOf(const Voice& voice, const Sample& sample, std::uint32_t sampleRate) noexcept {
    const auto offset = static_cast<std::uintptr_t>(voice.position) * sizeof(float);
    return {reinterpret_cast<std::uintptr_t>(sample.left.data()) + offset,
            reinterpret_cast<std::uintptr_t>(sample.right.data()) + offset,
            static_cast<std::uintptr_t>(incrementOf(sample, sampleRate) * 8.0) * sizeof(float)};
}

void mixVoice(Voice& voice, const Sample& sample, std::optional<float> sendGain,
              const MixSettings& settings, const Prefetch& prefetch, MixBus& bus) noexcept {
    const Mix mix{settings, sendGain, prefetch, bus, incrementOf(sample, settings.sampleRate)};
    const Part part = readablePart(voice.position, sample, mix.increment, settings.frames);
    if (part.frames > 0) {
        mixReadable(voice, part, mix);
    }
    if (voice.active && part.frames < settings.frames) {
        Scratch scratch;
        const Part rest = interpolatedPart(voice.position, sample, mix.increment,
                                           settings.frames - part.frames, scratch);
        mixPart<Layout::Contiguous>(voice, rest, part.frames, mix);
    }
}

} // namespace percussomatic
