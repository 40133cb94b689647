// SPDX-License-Identifier: MIT
#include "audio/sound_engine.h"

#include "audio/lanes.h"

#include <algorithm>
#include <cfloat>
#include <optional>
#include <utility>

namespace percussomatic {

using lumivarda::dsp::broadcast;
using lumivarda::dsp::kLanes;
using lumivarda::dsp::Lanes;
using lumivarda::dsp::load;
using lumivarda::dsp::store;
using lumivarda::dsp::storePcm;

// For bit-exact results every intermediate result has to be rounded to its own type.
static_assert(FLT_EVAL_METHOD == 0);

namespace {

constexpr float kPcmScale = 32767.0f;
// While one voice is mixed, the frames of the voice two later are prefetched: early enough to hide
// the memory latency, late enough for the frames to stay in the first-level cache.
constexpr std::size_t kPrefetchDistance = 2; // voices

constexpr std::array<EffectSettings, 6> kEffectPresets{{
    {0.20f, 0.42f, 0.58f, 0.92f, 5.0f},  // drum room
    {0.24f, 0.62f, 0.48f, 1.00f, 10.0f}, // warm room
    {0.16f, 0.28f, 0.66f, 0.78f, 2.0f},  // presets 2 and 3 have no button
    {0.30f, 0.82f, 0.38f, 1.00f, 18.0f},
    {0.34f, 0.92f, 0.42f, 1.00f, 26.0f}, // concert hall
    {0.38f, 0.97f, 0.58f, 0.88f, 32.0f}, // stadium
}};

// Unlike std::clamp, turns a NaN into 0.
float clampFromZero(float value, float max) noexcept {
    return value > 0.0f ? std::min(value, max) : 0.0f;
}

float clampUnit(float value) noexcept {
    return clampFromZero(value, 1.0f);
}

void addFour(float* bus, Lanes values) noexcept {
    store(bus, load(bus) + values);
}

SoundEngine theEngine;

} // namespace

void SoundEngine::trigger(std::int32_t sampleIndex, float gain) {
    if (outputMuted.load() != 0) {
        return;
    }
    const std::lock_guard lock(mutex);
    if (isInBankLocked(sampleIndex)) {
        startVoiceLocked(sampleIndex, gain);
    }
}

void SoundEngine::triggerAt(std::int32_t sampleIndex, float gain, std::int64_t dueNs) {
    if (outputMuted.load() != 0) {
        return;
    }
    const std::lock_guard lock(mutex);
    if (!isInBankLocked(sampleIndex)) {
        return;
    }
    const bool late =
        nextBlock && frameOfDueTime(nextBlock->originNs, dueNs) < nextBlock->firstFrame;
    if (late && std::exchange(lastLateNs, dueNs) != dueNs) {
        ++lateTriggers;
    }
    if (!nextBlock || late || pendingTriggers.full()) {
        startVoiceLocked(sampleIndex, gain);
    } else {
        pendingTriggers.push({.dueNs = dueNs, .sampleIndex = sampleIndex, .gain = gain});
    }
}

std::uint32_t SoundEngine::lateTriggerCount() const {
    const std::lock_guard lock(mutex);
    return lateTriggers;
}

bool SoundEngine::isInBankLocked(std::int32_t sampleIndex) const noexcept {
    return sampleIndex >= 0 && static_cast<std::size_t>(sampleIndex) < samples.size();
}

void SoundEngine::startVoiceLocked(std::int32_t sampleIndex, float gain) noexcept {
    auto* const idle = std::find_if(voices.begin(), voices.end(),
                                    [](const Voice& voice) { return !voice.active; });
    Voice& voice = idle != voices.end() ? *idle : voices[0];
    voice = Voice{.sampleIndex = sampleIndex, .gain = gain > 0.0f ? gain : 0.0f, .active = true};
}

void SoundEngine::setMasterVolume(float gain) {
    const std::lock_guard lock(mutex);
    masterVolume = clampUnit(gain);
}

void SoundEngine::setSend(std::uint32_t sampleIndex, float amount) {
    const std::lock_guard lock(mutex);
    if (sampleIndex < kSendCount) {
        sends[sampleIndex] = clampUnit(amount);
    }
}

float SoundEngine::getSend(std::uint32_t sampleIndex) const {
    const std::lock_guard lock(mutex);
    return sampleIndex < kSendCount ? sends[sampleIndex] : 0.0f;
}

void SoundEngine::setEffectEnabled(bool enabled) {
    const std::lock_guard lock(mutex);
    effectEnabled = enabled;
    if (!enabled) {
        reverb.reset();
    }
}

bool SoundEngine::isEffectEnabled() const {
    const std::lock_guard lock(mutex);
    return effectEnabled;
}

void SoundEngine::setEffectPreset(std::int32_t preset) {
    const std::int32_t index = std::clamp(preset, 0, 5);
    const std::lock_guard lock(mutex);
    effect = kEffectPresets[static_cast<std::size_t>(index)];
    reverb.presetIndex = index;
    reverb.settings = effect;
    reverb.wet = 1.0f;
    reverb.extra = {clampUnit(effectExtra1), clampUnit(effectExtra2), clampUnit(effectExtra3)};
    reverb.updateCoefficients();
}

void SoundEngine::setEffectReturn(float level) {
    setEffectValue(&EffectSettings::effectReturn, clampUnit(level));
}

void SoundEngine::setEffectRoomSize(float amount) {
    setEffectValue(&EffectSettings::roomSize, clampUnit(amount));
}

void SoundEngine::setEffectDamping(float amount) {
    setEffectValue(&EffectSettings::damping, clampUnit(amount));
}

void SoundEngine::setEffectWidth(float amount) {
    setEffectValue(&EffectSettings::width, clampUnit(amount));
}

void SoundEngine::setEffectPreDelayMs(float delayMs) {
    setEffectValue(&EffectSettings::preDelayMs, clampFromZero(delayMs, kMaxPreDelayMs));
}

float SoundEngine::getEffectReturn() const {
    return getEffectValue(&EffectSettings::effectReturn);
}

float SoundEngine::getEffectRoomSize() const {
    return getEffectValue(&EffectSettings::roomSize);
}

float SoundEngine::getEffectDamping() const {
    return getEffectValue(&EffectSettings::damping);
}

float SoundEngine::getEffectWidth() const {
    return getEffectValue(&EffectSettings::width);
}

float SoundEngine::getEffectPreDelayMs() const {
    return getEffectValue(&EffectSettings::preDelayMs);
}

EffectSettings SoundEngine::getEffectSettings() const {
    const std::lock_guard lock(mutex);
    return effect;
}

void SoundEngine::setEffectSettings(const EffectSettings& settings) {
    for (const EffectLimit& limit : kEffectLimits) {
        setEffectValue(limit.value, clampFromZero(settings.*limit.value, limit.max));
    }
}

// The caller has clamped the value.
void SoundEngine::setEffectValue(float EffectSettings::*value, float amount) {
    const std::lock_guard lock(mutex);
    effect.*value = amount;
    reverb.settings.*value = amount;
    reverb.updateCoefficients();
}

float SoundEngine::getEffectValue(float EffectSettings::*value) const {
    const std::lock_guard lock(mutex);
    return effect.*value;
}

void SoundEngine::setAutoStop(bool enabled, float threshold, std::uint32_t holdMs,
                              std::uint32_t minMs) {
    const std::lock_guard lock(mutex);
    autoStopEnabled = enabled;
    silenceThreshold = threshold;
    silenceHoldMs = holdMs;
    minPlayMs = minMs;
}

std::int32_t SoundEngine::loadSample(const void* bytes, std::size_t size) {
    if (bytes == nullptr) {
        return -1;
    }
    // Decodes without the lock, because that takes long and the device may already be playing.
    std::optional<Sample> sample = parseWave({static_cast<const std::byte*>(bytes), size});
    if (!sample) {
        return -1;
    }
    const std::lock_guard lock(mutex);
    samples.push_back(std::move(*sample));
    return static_cast<std::int32_t>(samples.size() - 1);
}

void SoundEngine::prepareForDevice() {
    const std::lock_guard lock(mutex);
    sampleRate = kDeviceRateHz;
    framesPerBuffer = kDeviceBufferFrames;
    reverb.prepare(kDeviceRateHz);
    reverb.setWet(1.0f);
}

void SoundEngine::deactivateAllVoices() {
    const std::lock_guard lock(mutex);
    for (Voice& voice : voices) {
        voice.active = false;
    }
    pendingTriggers.clear();
    nextBlock.reset();
}

void SoundEngine::renderBlock(std::int16_t* out, std::uint32_t frames) noexcept {
    const std::lock_guard lock(mutex);
    nextBlock.reset();
    if (beginBlockLocked(out, frames)) {
        for (const TimedTrigger& trigger : pendingTriggers) {
            startVoiceLocked(trigger.sampleIndex, trigger.gain);
        }
        pendingTriggers.clear();
        mixBlockLocked(out, frames);
    }
}

void SoundEngine::renderTimedBlock(std::int16_t* out, std::uint32_t frames,
                                   const StreamPosition& position) noexcept {
    const std::lock_guard lock(mutex);
    nextBlock = {position.originNs, position.firstFrame + frames};
    if (!beginBlockLocked(out, frames)) {
        return;
    }
    std::uint32_t rendered = 0;
    std::size_t started = 0;
    for (const TimedTrigger& trigger : pendingTriggers) {
        const std::int64_t frame =
            frameOfDueTime(position.originNs, trigger.dueNs) - position.firstFrame;
        if (frame >= frames) {
            break;
        }
        if (frame > rendered) { // never before: a correction of the stream clock may skip frames
            const std::uint32_t stretch = static_cast<std::uint32_t>(frame) - rendered;
            mixBlockLocked(out + std::size_t{rendered} * 2, stretch);
            rendered += stretch;
        }
        startVoiceLocked(trigger.sampleIndex, trigger.gain);
        ++started;
    }
    pendingTriggers.popFront(started);
    mixBlockLocked(out + std::size_t{rendered} * 2, frames - rendered);
}

// Carries out a stop request. False if the output is muted; the block is then silent.
bool SoundEngine::beginBlockLocked(std::int16_t* out, std::uint32_t frames) noexcept {
    if (stopAllVoicesRequest.exchange(0) != 0) {
        stopAllVoicesLocked();
    }
    if (outputMuted.load() == 0) {
        return true;
    }
    pendingTriggers.clear();
    std::fill_n(out, std::size_t{frames} * 2, std::int16_t{0});
    return false;
}

void SoundEngine::stopAllVoicesLocked() noexcept {
    pendingTriggers.clear();
    for (Voice& voice : voices) {
        voice.active = false;
        voice.sampleIndex = -1;
        voice.position = 0.0;
        voice.gain = 0.0f;
    }
}

// Mixes voice by voice into a bus instead of frame by frame. Each frame still adds its voices in
// slot order, so every sum rounds as it does frame by frame.
void SoundEngine::mixBlockLocked(std::int16_t* out, std::uint32_t frames) noexcept {
    while (frames > 0) {
        const std::uint32_t chunk = std::min<std::uint32_t>(frames, kBusFrames);
        MixBus bus;
        const bool anyVoice = mixVoicesLocked(bus, chunk);
        if (effectEnabled) {
            addTailLocked(bus, chunk);
        }
        if (anyVoice || effectEnabled) {
            const Lanes volume = broadcast(masterVolume);
            for (std::size_t frame = 0; frame < chunk; frame += kLanes) {
                storePcm(out + 2 * frame, load(bus.left + frame) * volume,
                         load(bus.right + frame) * volume, kPcmScale,
                         std::min(kLanes, chunk - frame));
            }
        } else {
            std::fill_n(out, std::size_t{chunk} * 2, std::int16_t{0});
        }
        out += std::size_t{chunk} * 2;
        frames -= chunk;
    }
}

// Clears the bus and adds all active voices. Returns false if there are none; without the effect
// the bus is then left uninitialised, since it is not read.
bool SoundEngine::mixVoicesLocked(MixBus& bus, std::size_t frames) noexcept {
    std::array<Voice*, kVoiceCount> active{};
    std::size_t count = 0;
    for (Voice& voice : voices) {
        if (voice.active && voice.sampleIndex >= 0) {
            active[count++] = &voice;
        }
    }
    if (count > 0 || effectEnabled) {
        bus = {};
    }
    const MixSettings settings{.frames = frames,
                               .sampleRate = sampleRate,
                               .autoStop = autoStopEnabled,
                               .silenceThreshold = silenceThreshold,
                               .holdFrames = framesOfMsLocked(silenceHoldMs),
                               .minFrames = framesOfMsLocked(minPlayMs)};
    const auto sampleOf = [this](const Voice& voice) -> const Sample& {
        return samples[static_cast<std::size_t>(voice.sampleIndex)];
    };
    for (std::size_t i = 0; i < count; ++i) {
        Voice& voice = *active[i];
        const Voice& later = *active[std::min(i + kPrefetchDistance, count - 1)];
        const auto index = static_cast<std::size_t>(voice.sampleIndex);
        const bool hasSend = effectEnabled && index < kSendCount;
        mixVoice(voice, sampleOf(voice),
                 hasSend ? std::optional(sends[index] * voice.gain) : std::nullopt, settings,
                 prefetchOf(later, sampleOf(later), sampleRate), bus);
    }
    return count > 0;
}

// Adds the reverb's output to the bus. Also called without active voices, so that the tail decays.
void SoundEngine::addTailLocked(MixBus& bus, std::size_t frames) noexcept {
    reverb.processBlock(bus.sendLeft, bus.sendRight, bus.sendLeft, bus.sendRight, frames);
    const Lanes level = broadcast(effect.effectReturn);
    for (std::size_t frame = 0; frame < frames; frame += kLanes) {
        addFour(bus.left + frame, level * load(bus.sendLeft + frame));
        addFour(bus.right + frame, level * load(bus.sendRight + frame));
    }
}

// At least one frame, even for 0 ms.
std::uint64_t SoundEngine::framesOfMsLocked(std::uint32_t ms) const noexcept {
    return std::max<std::uint64_t>(std::uint64_t{sampleRate} * ms / 1000, 1);
}

SoundEngine& soundEngine() noexcept {
    return theEngine;
}

} // namespace percussomatic
