#include "fuzz/sound.h"

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "audio/sound_engine.h"
#include "support/reference_engine.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace percussomatic::fuzz {

namespace {

struct Recording {
    std::uint32_t rateHz, frames;
    std::uint32_t soundingFrames; // the rest is silent
};

constexpr std::array<Recording, 2 * kLineCount> kRecordings{{
    {96000, 20000, 20000},
    {96000, 30000, 3000},
    {48000, 9000, 9000},
    {44100, 12000, 8000},
    {8000, 700, 700},
    {96000, 1, 1},
    {11025, 2, 2},
    {1000000, 50000, 50000},
    {1, 3, 2},
    {192000, 30000, 0},
    {47999, 5000, 5000},
    {48000, 14100, 100},
}};

// Beside the engine; what it does not know by itself is copied from there before each render.
reference::ReferenceEngine referenceEngine;
bool plainTail = false; // its reverb holds something

Indices loadRecordings() {
    Indices indices{};
    std::uint32_t noise = 1;
    SampleBank& bank = soundEngine().samples;
    for (std::size_t i = 0; i < kRecordings.size(); ++i) {
        const auto& [rateHz, frames, soundingFrames] = kRecordings[i];
        Sample sample{rateHz, std::vector<float>(frames), std::vector<float>(frames), true};
        for (std::uint32_t frame = 0; frame < soundingFrames; ++frame) {
            for (std::vector<float>* plane : {&sample.left, &sample.right}) {
                noise = noise * 1664525 + 1013904223;
                (*plane)[frame] = static_cast<float>(static_cast<std::int32_t>(noise)) / 0x1p31f;
            }
        }
        indices[i] = static_cast<std::int32_t>(bank.size());
        bank.push_back(std::move(sample));
    }
    soundEngine().prepareForDevice();
    referenceEngine.prepareForDevice();
    return indices;
}

void copyToPlain(const SoundEngine& engine) {
    referenceEngine.outputMuted = engine.outputMuted != 0;
    referenceEngine.stopAllVoicesRequest = engine.stopAllVoicesRequest != 0;
    referenceEngine.masterVolume = engine.masterVolume;
    referenceEngine.setAutoStop(engine.autoStopEnabled, engine.silenceThreshold,
                                engine.silenceHoldMs, engine.minPlayMs);
    referenceEngine.sends = engine.sends;
    referenceEngine.effectEnabled = engine.effectEnabled;
    referenceEngine.effectReturn = engine.effect.effectReturn;
    referenceEngine.reverb.roomSize = engine.effect.roomSize;
    referenceEngine.reverb.damping = engine.effect.damping;
    referenceEngine.reverb.width = engine.effect.width;
    referenceEngine.reverb.preDelayMs = engine.effect.preDelayMs;
    referenceEngine.voices = engine.voices;
}

} // namespace

const Indices& loadedRecordings() {
    static const Indices indices = loadRecordings();
    return indices;
}

void resetSound() {
    SoundEngine& engine = soundEngine();
    if (referenceEngine.samples.size() != engine.samples.size()) {
        referenceEngine.samples = engine.samples;
    }
    engine.voices = {};
    engine.setAutoStop(true, 1e-5f, 100, 50);
    engine.setEffectEnabled(false);
    selectPreset(0);
    for (std::uint32_t send = 0; send < kSendCount; ++send) {
        engine.setSend(send, 0.0f);
    }
}

void clearPlainTail() {
    if (plainTail && !soundEngine().effectEnabled) {
        referenceEngine.reverb.reset();
        plainTail = false;
    }
}

void render(std::uint32_t frames) {
    SoundEngine& engine = soundEngine();
    copyToPlain(engine);
    plainTail = plainTail || engine.effectEnabled;
    std::vector<std::int16_t> out(2 * std::size_t{frames}), expected(out.size());
    engine.renderBlock(out.data(), frames);
    referenceEngine.renderBlock(expected.data(), frames);
    require(out == expected, "a render is what the plain engine renders");
    require(std::count(out.begin(), out.end(), std::numeric_limits<std::int16_t>::min()) == 0,
            "-32768 is never written");
    require(std::equal(engine.voices.begin(), engine.voices.end(), referenceEngine.voices.begin(),
                       [](const Voice& a, const Voice& b) {
                           return a.active == b.active && a.position == b.position &&
                                  a.silentFrames == b.silentFrames &&
                                  a.playedFrames == b.playedFrames;
                       }),
            "voices stand where those of the plain engine do");
    for (std::size_t channel = 0; channel < 2; ++channel) {
        require(std::equal(engine.reverb.combs[channel].begin(), engine.reverb.combs[channel].end(),
                           referenceEngine.reverb.combs[channel].begin(),
                           [](const auto& a, const auto& b) { return a.filterStore == b.lowPass; }),
                "the tail is the plain reverb's to the bit");
    }
}

void trigger(Input& input) {
    const int index = input.below(2 * kRecordings.size() + 4) - 2; // both ends are passed
    const auto gain = static_cast<float>(input.word()) * 0.001f;
    for (int voice = input.below(70); voice >= 0; --voice) {
        soundEngine().trigger(index, gain);
    }
}

void turnEffect(Input& input) {
    SoundEngine& engine = soundEngine();
    switch (input.below(5)) {
    case 0:
        engine.setEffectEnabled(input.flag());
        break;
    case 1:
        selectPreset(input.below(6) - 1);
        break;
    case 2:
    case 3: {
        const int bar = input.byte() % 24; // with some that are none
        moveBar(engine, bar < 14 ? kSendBarId + bar - 1 : kParameterBarId + bar - 14,
                input.below(130) - 10);
        break;
    }
    default: {
        const auto threshold = static_cast<float>(input.below(4)) * 1e-3f;
        const auto holdMs = static_cast<std::uint32_t>(input.below(16));
        const auto minMs = static_cast<std::uint32_t>(input.below(16));
        engine.setAutoStop(input.flag(), threshold, holdMs, minMs);
    }
    }
}

} // namespace percussomatic::fuzz
