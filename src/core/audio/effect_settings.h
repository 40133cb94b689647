// SPDX-License-Identifier: MIT
#pragma once

#include <array>

namespace percussomatic {

// The reverb parameters that the player sets. Presets and punch cards store the same.
struct EffectSettings {
    float effectReturn = 0.0f; // 0..1, gain of the wet signal in the mix
    float roomSize = 0.0f;     // 0..1, larger is a longer tail
    float damping = 0.0f;      // 0..1, larger makes high frequencies decay faster
    float width = 0.0f;        // 0 (mono) .. 1 (no cross-feed)
    float preDelayMs = 0.0f;   // 0..kMaxPreDelayMs

    bool operator==(const EffectSettings&) const = default;
};

inline constexpr float kMaxPreDelayMs = 200.0f;

// Every setting with its maximum; the minimum is 0.
struct EffectLimit {
    float EffectSettings::*value;
    float max;
};

inline constexpr std::array<EffectLimit, 5> kEffectLimits{{
    {&EffectSettings::effectReturn, 1.0f},
    {&EffectSettings::roomSize, 1.0f},
    {&EffectSettings::damping, 1.0f},
    {&EffectSettings::width, 1.0f},
    {&EffectSettings::preDelayMs, kMaxPreDelayMs},
}};

} // namespace percussomatic
