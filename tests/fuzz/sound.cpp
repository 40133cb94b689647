// SPDX-License-Identifier: MIT
#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "audio/sound_engine.h"
#include "fuzz/instrument.h"

#include <algorithm>
#include <limits>
#include <utility>
#include <vector>

namespace percussomatic::fuzz {

namespace {

struct Recording {
    std::uint32_t rateHz, frames;
    std::uint32_t audibleFrames; // the rest is silent
};

constexpr Recording kRecordings[kInstrumentCount] = {
    {96000, 20000, 20000}, {96000, 30000, 3000},    {48000, 9000, 9000},
    {44100, 12000, 8000},  {8000, 700, 700},        {96000, 1, 1},
    {11025, 2, 2},         {1000000, 50000, 50000}, {1, 3, 2},
    {192000, 30000, 0},    {47999, 5000, 5000},     {48000, 14100, 100}};

decltype(Sequencer::sampleIndices) loadRecordings() {
    decltype(Sequencer::sampleIndices) indices{};
    std::uint32_t noise = 1;
    SampleBank& bank = soundEngine().samples;
    for (std::size_t i = 0; i < indices.size(); ++i) {
        const auto& [rateHz, frames, audibleFrames] = kRecordings[i];
        Sample sample{rateHz, std::vector<float>(frames), std::vector<float>(frames), true};
        for (std::uint32_t frame = 0; frame < audibleFrames; ++frame) {
            for (std::vector<float>* channel : {&sample.left, &sample.right}) {
                noise = noise * 1664525 + 1013904223;
                (*channel)[frame] = static_cast<float>(static_cast<std::int32_t>(noise)) / 0x1p31f;
            }
        }
        indices[i] = static_cast<std::int32_t>(bank.size());
        bank.push_back(std::move(sample));
    }
    soundEngine().prepareForDevice();
    return indices;
}

} // namespace

const decltype(Sequencer::sampleIndices)& testRecordings() {
    static const auto indices = loadRecordings();
    return indices;
}

void resetSound() {
    SoundEngine& engine = soundEngine();
    engine.voices = {};
    engine.setAutoStop(true, 1e-5f, 100, 50);
    engine.setEffectEnabled(false);
    selectPreset(0);
    for (std::uint32_t send = 0; send < kSendCount; ++send) {
        engine.setSend(send, 0.0f);
    }
}

void render(std::uint32_t frames) {
    std::vector<std::int16_t> out(2 * std::size_t{frames});
    soundEngine().renderBlock(out.data(), frames);
    require(std::ranges::count(out, std::numeric_limits<std::int16_t>::min()) == 0,
            "-32768 is never written");
}

void trigger(Input& input) {
    const int index = input.below(2 * kInstrumentCount + 4) - 2; // also outside the bank
    const auto gain = static_cast<float>(input.word()) * 0.001f;
    for (int voice = input.below(70); voice >= 0; --voice) {
        soundEngine().trigger(index, gain);
    }
}

void changeEffect(Input& input) {
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
        const int bar = input.byte() % 24; // some do not exist
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
