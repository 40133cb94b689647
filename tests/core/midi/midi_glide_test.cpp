#include "midi/midi_glide.h"
#include "panel/panel_state.h"
#include "sequencer/transport.h"

#include "audio/sound_engine.h"
#include "midi/midi_mapping.h"
#include "midi/midi_state.h"
#include "sequencer/sequencer.h"
#include "support/fake_midi.h"
#include "support/fake_screen.h"
#include "support/panel_actions.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

namespace percussomatic {
namespace {

bool timerRuns() {
    return fakeSystem().timers.contains(WindowTimer::midiGlide);
}

// Ticks until all has landed; at most 100.
int glideToTheEnd() {
    int ticks = 0;
    while (timerRuns() && ticks < 100) {
        midiSmoothingTick();
        EXPECT_EQ(staleControls(), Names{});
        ++ticks;
    }
    return ticks;
}

class MidiGlide : public testing::Test {
protected:
    FreshMidi instrument_;
};

TEST_F(MidiGlide, TempoGoesThirtyFivePercentOfTheRestAndLandsExactly) {
    toggleRunning();
    passTimeTo(1 * kNsPerMs);
    applyMidiToControl(findControl("rotary_002"), 127, true);
    EXPECT_EQ(sequencer().bpm, 120.0) << "nothing moves before the first tick";
    double rest = 120.0; // BPM below 240
    for (int tick = 0; tick < 13; ++tick) {
        takeRedraws();
        midiSmoothingTick();
        EXPECT_NEAR(sequencer().bpm, 240.0 - (rest *= 0.65), 1e-9) << tick;
        EXPECT_EQ(takeRedraws(), (Names{"tempo box", "rotary_002 now"}));
        EXPECT_TRUE(timerRuns());
    }
    midiSmoothingTick(); // from 0.0022 of the way before the end to 0.0014
    EXPECT_TRUE(timerRuns());
    midiSmoothingTick();
    EXPECT_EQ(sequencer().bpm, 240.0);
    EXPECT_EQ(panelState().tempo.value, 1.0);
    EXPECT_EQ(fakeSystem().syncStatus, L"SYNC: INTERNAL BPM: 240.00");
    EXPECT_FALSE(timerRuns());
    passTimeTo(1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 1u + 14u) << "125 ms, from then on 62.5 ms";
}

TEST_F(MidiGlide, RunningTimerIsLeftAloneAndTheLatestTargetCounts) {
    const int slider = findControl("slider_004"), rotary = findControl("rotary_001");
    applyMidiToControl(slider, 127, true);
    EXPECT_EQ(fakeSystem().timers.at(WindowTimer::midiGlide), 16u);
    fakeSystem().timers[WindowTimer::midiGlide] = 1; // would be overwritten by a new begin
    midiSmoothingTick();
    EXPECT_EQ(takeRedraws(), Names{"slider_004 from 0"});
    EXPECT_EQ(sliderOffset("slider_004"), 227u); // 0.35 of 650, just short of 227.5
    applyMidiToControl(rotary, 0, false);
    applyMidiToControl(slider, 0, false);
    EXPECT_EQ(fakeSystem().timers.at(WindowTimer::midiGlide), 1u);
    midiSmoothingTick();
    EXPECT_EQ(sliderOffset("slider_004"), 148u); // 0.65 of 227
    cancelGlides();
    EXPECT_FALSE(timerRuns());
    midiSmoothingTick(); // one that was on its way already
    EXPECT_EQ(sliderOffset("slider_004"), 148u);
    EXPECT_EQ(panelState().master.value, 0.65);
    applyMidiToControl(slider, 1, false);
    EXPECT_EQ(fakeSystem().timers.at(WindowTimer::midiGlide), 16u) << "begun again";
}

TEST_F(MidiGlide, SliderStopsOneUnitShortOfSomeTargets) {
    const struct {
        double target; // offset
        std::uint32_t from, offset;
        bool lands;
    } cases[] = {{301.29, 300, 301, true},  {301.31, 300, 300, false}, {301.44, 300, 301, true},
                 {298.69, 300, 300, false}, {298.71, 300, 299, true},  {320.4, 0, 319, false}};
    const int slider = findControl("slider_002");
    for (const auto& [target, from, offset, lands] : cases) {
        SCOPED_TRACE(target);
        const FreshMidi instrument;
        sliderOffset("slider_002") = from;
        resetFakeScreen();
        glideTo(slider, target / kSliderTravel);
        EXPECT_EQ(glideToTheEnd() < 100, lands);
        EXPECT_EQ(sliderOffset("slider_002"), offset);
        applyMidiToControl(slider, 127, false);
        EXPECT_LT(glideToTheEnd(), 20);
        EXPECT_EQ(sliderOffset("slider_002"), 650u);
    }
}

} // namespace
} // namespace percussomatic
