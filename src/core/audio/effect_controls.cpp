// SPDX-License-Identifier: MIT
#include "audio/effect_controls.h"

#include <algorithm>

namespace percussomatic {

namespace {

struct Parameter {
    float (SoundEngine::*get)() const;
    void (SoundEngine::*set)(float);
    float positionsPerUnit;
    float rounding; // added to the position before it is truncated
};

constexpr float kPerUnit = 100.0f; // positions per unit of all settings of 0..1
constexpr float kHalfUp = 0.5f;

constexpr std::array<Parameter, 5> kParameters{{
    {&SoundEngine::getEffectReturn, &SoundEngine::setEffectReturn, kPerUnit, kHalfUp},
    {&SoundEngine::getEffectRoomSize, &SoundEngine::setEffectRoomSize, kPerUnit, kHalfUp},
    {&SoundEngine::getEffectDamping, &SoundEngine::setEffectDamping, kPerUnit, kHalfUp},
    {&SoundEngine::getEffectWidth, &SoundEngine::setEffectWidth, kPerUnit, kHalfUp},
    {&SoundEngine::getEffectPreDelayMs, &SoundEngine::setEffectPreDelayMs, 0.5f, 0.0f}, // 0..200 ms
}};

constexpr std::array<float SoundEngine::*, 3> kExtras{
    &SoundEngine::effectExtra1, &SoundEngine::effectExtra2, &SoundEngine::effectExtra3};

// Single precision, so that a setting of 0.005 is exactly half a position and rounds up.
int positionOf(float value, float positionsPerUnit, float rounding) noexcept {
    const float position = value * positionsPerUnit + rounding;
    return position > 0.0f ? static_cast<int>(std::min(position, float{kMaxBarPosition})) : 0;
}

float extraOf(const SoundEngine& engine, float SoundEngine::*extra) {
    const std::lock_guard lock(engine.mutex);
    return engine.*extra;
}

void setExtra(SoundEngine& engine, std::size_t index, float value) {
    const std::lock_guard lock(engine.mutex);
    engine.*kExtras[index] = std::clamp(value, 0.0f, 1.0f);
    engine.reverb.extra[index] = engine.*kExtras[index];
}

bool isSendBar(int id) noexcept {
    return id >= kSendBarId && id < kSendBarId + kSendBars;
}

bool isParameterBar(int id) noexcept {
    return id >= kParameterBarId && id < kParameterBarId + kParameterBars;
}

} // namespace

int barPosition(const SoundEngine& engine, int id) {
    if (isSendBar(id)) {
        const auto send = static_cast<std::uint32_t>(id - kSendBarId);
        return positionOf(engine.getSend(send), kPerUnit, kHalfUp);
    }
    if (!isParameterBar(id)) {
        return 0;
    }
    const auto index = static_cast<std::size_t>(id - kParameterBarId);
    if (index < kParameters.size()) {
        const Parameter& parameter = kParameters[index];
        return positionOf((engine.*parameter.get)(), parameter.positionsPerUnit,
                          parameter.rounding);
    }
    return positionOf(extraOf(engine, kExtras[index - kParameters.size()]), kPerUnit, kHalfUp);
}

void moveBar(SoundEngine& engine, int id, int position) {
    const auto newPosition = static_cast<float>(position);
    if (isSendBar(id)) {
        engine.setSend(static_cast<std::uint32_t>(id - kSendBarId), newPosition / kPerUnit);
    } else if (isParameterBar(id)) {
        const auto index = static_cast<std::size_t>(id - kParameterBarId);
        if (index < kParameters.size()) {
            (engine.*kParameters[index].set)(newPosition / kParameters[index].positionsPerUnit);
        } else {
            setExtra(engine, index - kParameters.size(), newPosition / kPerUnit);
        }
    }
}

} // namespace percussomatic
