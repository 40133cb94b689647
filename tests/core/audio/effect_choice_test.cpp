// SPDX-License-Identifier: MIT
#include "audio/effect_choice.h"

#include "audio/effect_controls.h"

#include <gtest/gtest.h>

#include <limits>

namespace percussomatic {
namespace {

TEST(EffectChoice, SkipsTheEnginePresetsWithoutAButton) {
    const std::tuple<std::int32_t, std::int32_t, std::int32_t> cases[] = {
        {-1, 0, 0}, {1, 1, 1}, {2, 2, 4}, {3, 3, 5}, {4, 3, 5}, {0, 0, 0}};
    for (const auto& [preset, selected, enginePreset] : cases) {
        selectPreset(preset);
        EXPECT_EQ(effectChoice().selectedPreset, selected);
        EXPECT_EQ(soundEngine().reverb.presetIndex, enginePreset);
    }
}

TEST(EffectControls, PositionsRoundHalfUpExceptThePreDelayWhichIsTruncated) {
    SoundEngine engine;
    const std::tuple<int, float&, float, int> cases[] = {
        {2000, engine.sends[0], 0.005f, 1},
        {2001, engine.sends[1], 0.004f, 0},
        {2110, engine.effect.effectReturn, 0.345f, 35},
        {2111, engine.effect.roomSize, 1.0f, 100},
        {2112, engine.effect.damping, 0.579f, 58},
        {2113, engine.effect.width, 0.574f, 57},
        {2114, engine.effect.preDelayMs, 9.0f, 4},
        {2115, engine.effectExtra1, 7.0f, 100},
        {2116, engine.effectExtra2, -1.0f, 0},
        {2117, engine.effectExtra3, std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (const auto& [bar, setting, value, position] : cases) {
        setting = value;
        EXPECT_EQ(barPosition(engine, bar), position) << bar << " at " << value;
    }
}

TEST(EffectControls, EveryBarSetsWhatItShows) {
    SoundEngine engine;
    for (int id = 1999; id <= 2118; ++id) {
        const bool bar = (id >= 2000 && id < 2012) || (id >= 2110 && id < 2118);
        for (int position = 100; position >= 0; --position) {
            moveBar(engine, id, position);
            ASSERT_EQ(barPosition(engine, id), bar ? position : 0) << id;
        }
    }
    moveBar(engine, 2114, 4);
    EXPECT_EQ(engine.effect.preDelayMs, 8.0f);
    for (const auto& [position, value] : {std::pair{101, 1.0f}, {-1, 0.0f}, {75, 0.75f}}) {
        moveBar(engine, 2116, position);
        EXPECT_EQ(engine.effectExtra2, value);
        EXPECT_EQ(engine.reverb.extra[1], value);
    }
}

} // namespace
} // namespace percussomatic
