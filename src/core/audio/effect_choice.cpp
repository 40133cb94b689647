// SPDX-License-Identifier: MIT
#include "audio/effect_choice.h"

#include "audio/sound_engine.h"

#include <algorithm>

namespace percussomatic {

namespace {

struct OfferedPreset {
    std::int32_t enginePreset;
    EffectCaptions captions;
};

// By selectedPreset. The engine's presets 2 and 3 are not offered.
constexpr std::array<OfferedPreset, 4> kOfferedPresets{{
    {0,
     {{L"Return", L"Room Size", L"Damping", L"Stereo Width", L"Pre-Delay"},
      L"A small, controlled ambience for bass drum, snare and percussion."}},
    {1,
     {{L"Return", L"Room Size", L"Warm Tone", L"Stereo Width", L"Pre-Delay"},
      L"A warm and smooth room designed for vintage electronic drums."}},
    {4,
     {{L"Return", L"Hall Size", L"Damping", L"Stereo Width", L"Pre-Delay"},
      L"A large hall with a long tail and an open stereo image."}},
    {5,
     {{L"Return", L"Reverb Tail", L"Vintage Tone", L"Stereo Spread", L"Pre-Delay"},
      L"A dark, enveloping tail for organs and vintage electronic instruments."}},
}};

EffectChoice theChoice;

const OfferedPreset& selectedOffer() noexcept {
    return kOfferedPresets[static_cast<std::size_t>(theChoice.selectedPreset)];
}

} // namespace

EffectChoice& effectChoice() noexcept {
    return theChoice;
}

void selectPreset(std::int32_t preset) {
    theChoice.selectedPreset = std::clamp(preset, 0, 3);
    soundEngine().setEffectPreset(selectedOffer().enginePreset);
}

const EffectCaptions& effectCaptions() noexcept {
    return selectedOffer().captions;
}

} // namespace percussomatic
