// SPDX-License-Identifier: MIT
#include "midi/midi_mapping.h"

#include "midi/midi_glide.h"
#include "midi/midi_learn.h"
#include "midi/midi_message.h"
#include "midi/midi_state.h"
#include "support/panel_actions.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace percussomatic {
namespace {

void learn(std::string_view name, int channel, int controller, int value) {
    armMidiLearn();
    EXPECT_TRUE(learnClick(centreOf(name), kScale));
    handleControlChange(channel, controller, value);
}

struct MidiMappings : testing::Test, FreshInstrument {};

TEST_F(MidiMappings, StatusLineShowsNotesControllersAndPitchBendOnly) {
    const std::pair<std::uint32_t, const wchar_t*> cases[] = {
        {0x407B90, L"Received: NOTE ON 123 Value 64 CH 1"},
        {0x007B9F, L"Received: NOTE OFF 123 Value 0 CH 16"}, // velocity 0
        {0x407B80, L"Received: NOTE OFF 123 Value 64 CH 1"},
        {0x7F15B0, L"Received: CC 21 Value 127 CH 1"},
        {0x4001E0, L"Received: PITCH BEND 8193 CH 1"}};
    for (const auto& [message, text] : cases) {
        handleMidiMessage(message);
        for (const std::uint32_t other :
             {0x4040A0U, 0x0040C0U, 0x0040D3U, 0x0000F0U, 0x0000F8U, 0x407B10U}) {
            handleMidiMessage(other);
            EXPECT_EQ(fakeSystem().learnLine, text) << std::hex << other;
        }
    }
}

TEST_F(MidiMappings, LearnSelectsTheTopmostControlUnderTheClick) {
    const PixelRect power = controlClientRect(findControl(control::kPower), kScale);
    const PixelPoint sliderAtZero = centreOf("slider_003");
    sliderOffset("slider_003") = 400;
    const std::pair<PixelPoint, std::string> cases[] = {
        {centreOf("rotary_001"), "rotary_001"},
        {centreOf("sw_014"), "sw_015"}, // lies on top
        {centreOf("bin_001"), ""},
        {{power.left, power.top}, "pw_001"}, // every drawn pixel counts
        {centreOf("slider_003"), "slider_003"},
        {sliderAtZero, ""}}; // only the thumb
    for (const auto& [click, target] : cases) {
        SCOPED_TRACE(testing::Message() << click.x << ", " << click.y << ": " << target);
        armMidiLearn();
        EXPECT_TRUE(learnClick(click, kScale));
        EXPECT_EQ(midiState().learnTargetId, target);
        EXPECT_EQ(fakeSystem().learnLine,
                  target.empty()
                      ? L"Learn: click a rotary, slider or button"
                      : L"Move a MIDI control for: " + std::wstring(target.begin(), target.end()));
        EXPECT_EQ(learnClick(click, kScale), target.empty()) << "still armed";
    }
}

TEST_F(MidiMappings, LearnBindsAControlChangeUntilTheMappingsAreCleared) {
    midiState().profileDeviceName = L"Keys";
    learn("sw_001", 2, 7, 100);
    EXPECT_EQ(fakeSystem().learnLine, L"Mapped sw_001 to CC 7 / CH 3");
    EXPECT_EQ(midiState().mappings, (std::vector<MidiMapping>{{"sw_001", 2, 7}}));
    EXPECT_EQ(settingsText(), L"[DEVICE:Keys]\nsw_001=2,7\n[GENERAL]\nLastMidiDevice=Keys\n");
    handleControlChange(2, 7, 127);
    EXPECT_EQ(toggleBit("sw_001"), 0) << "no rising edge since the learned value";
    handleControlChange(2, 7, 0);
    handleControlChange(3, 7, 127);
    handleControlChange(2, 8, 127);
    EXPECT_EQ(toggleBit("sw_001"), 0) << "other channel and other controller";
    handleControlChange(2, 7, 64);
    EXPECT_EQ(toggleBit("sw_001"), 1);
    learn("rotary_001", 0, 1, 0);
    EXPECT_TRUE(fakeSystem().timers.empty()) << "no glide";

    armMidiLearn();
    learnClick(centreOf("sw_002"), kScale);
    clearMidiMappings();
    EXPECT_EQ(settingsText(), L"[GENERAL]\nLastMidiDevice=Keys\n");
    handleControlChange(2, 7, 0);
    EXPECT_TRUE(midiState().mappings.empty()) << "learn has been cancelled";
    EXPECT_EQ(midiState().lastValue(2, 7), 64) << "stored for mapped controllers only";
}

TEST_F(MidiMappings, FirstMappingCountsAndNamesIgnoreCase) {
    midiState().mappings = {{"no_such", 0, 1}, {"sw_001", 0, 1}, {"SW_002", 0, 2}};
    handleControlChange(0, 1, 127);
    EXPECT_EQ(toggleBit("sw_001"), 0);
    handleControlChange(0, 2, 127);
    EXPECT_EQ(toggleBit("sw_002"), 1);
}

TEST_F(MidiMappings, SwitchesToggleOnRisingEdgesAndClearSwitchesFollowTheValue) {
    const std::tuple<int, int, int> cases[] = {// value, then the bit of a switch, of a clear switch
                                               {63, 0, 0}, {64, 1, 1}, {127, 1, 1}, {63, 1, 0},
                                               {64, 0, 1}, {0, 0, 0},  {127, 1, 1}};
    sequencer().pattern.set(0, 1, true);
    const Pattern before = sequencer().pattern;
    for (const std::string name :
         {"sw_001", "sw_014", "sw_017", "bottone_018", "pw_001", "sw_018", "sw_029"}) {
        const bool clears = name == "sw_018" || name == "sw_029";
        midiState().mappings = {{name, 5, 6}};
        midiState().lastValue(5, 6) = 0;
        toggleBit(name) = 0;
        resetFakeScreen();
        for (const auto& [value, edge, level] : cases) {
            handleControlChange(5, 6, value);
            EXPECT_EQ(toggleBit(name), clears ? level : edge) << name << " at " << value;
            EXPECT_EQ(staleControls(), Names{});
        }
    }
    EXPECT_EQ(sequencer().pattern, before);
    EXPECT_FALSE(panelState().powerOffPending);
}

TEST_F(MidiMappings, StartSwitchByMidiDoesNotTriggerStepZero) {
    Sequencer& now = sequencer();
    now.pattern.set(0, 0, true);
    now.currentStep = 3;
    sliderOffset("slider_001") = 650;
    toggleBit("sw_001") = 1;
    const int start = findControl(control::kStartStop);
    takeRedraws();
    applyMidiToControl(start, 127, true);
    EXPECT_EQ(now.currentStep, 0u);
    EXPECT_EQ(takeRedraws(), (Names{"sw_007 later", "bin_001 later", "flush"})) << "no column";
    EXPECT_EQ(takeVoices(), 0);
    passTimeTo(1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 8u);
    applyMidiToControl(start, 127, true);
    EXPECT_FALSE(now.running || fakeSystem().awake);
}

TEST_F(MidiMappings, OnlyFloodsOfControllersAreOvertakenBySteps) {
    midiState().mappings = {{"sw_007", 0, 1}, {"sw_008", 0, 2}, {"slider_001", 0, 3}};
    const std::pair<std::uint32_t, bool> cases[] = {
        {0x7F01B0, false}, // START/STOP
        {0x7F02B0, false}, // EDIT
        {0x7F03B0, true},  {0x7F01B1, true}, {0x0000FA, false}, {0x0000F8, false},
        {0x7F0190, false}, {0x10004, false}}; // the last: a command of the MIDI window
    for (const auto& [message, overtaken] : cases) {
        EXPECT_EQ(mayFollowLaterSteps(message), overtaken) << std::hex << message;
    }
}

TEST_F(MidiMappings, LengthByMidiLeavesTheStepToTheNextTick) {
    Sequencer& now = sequencer();
    now.running = true;
    now.currentStep = 11;
    resetFakeScreen();
    applyMidiToControl(findControl("sw_011"), 127, true);
    EXPECT_EQ(now.sequenceLength, 9u);
    EXPECT_EQ(now.currentStep, 11u);
    EXPECT_EQ(staleControls(), Names{});
    onClockTick();
    EXPECT_EQ(now.currentStep, 3u);
    applyMidiToControl(findControl(control::kEdit), 127, true);
    EXPECT_TRUE(now.editMode);
}

bool timerRuns() {
    return fakeSystem().timers.contains(WindowTimer::midiGlide);
}

using MidiGlide = MidiMappings;

TEST_F(MidiGlide, EveryTickCovers35PercentUntilTheTargetIsReached) {
    toggleRunning();
    passTimeTo(1 * kNsPerMs);
    applyMidiToControl(findControl(control::kTempoRotary), 127, true);
    EXPECT_EQ(sequencer().bpm, 120.0) << "before the first tick";
    double rest = 120.0; // BPM below 240
    panelState().tempo.dragging = true;
    for (int tick = 0; tick < 14; ++tick) {
        midiSmoothingTick();
        EXPECT_FALSE(panelState().tempo.dragging);
        EXPECT_NEAR(sequencer().bpm, 240.0 - (rest *= 0.65), 1e-9) << tick;
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_TRUE(timerRuns());
    }
    midiSmoothingTick();
    EXPECT_EQ(sequencer().bpm, 240.0);
    EXPECT_EQ(panelState().tempo.value, 1.0);
    EXPECT_FALSE(timerRuns());
    passTimeTo(1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 1u + 14u) << "one after 125 ms, then every 62.5 ms";
}

TEST_F(MidiGlide, RunningTimerIsNotRestartedAndTheLatestTargetCounts) {
    const int slider = findControl("slider_004"), rotary = findControl(control::kMasterRotary);
    applyMidiToControl(slider, 127, true);
    fakeSystem().timers[WindowTimer::midiGlide] = 1; // a restart would overwrite it
    midiSmoothingTick();
    EXPECT_EQ(sliderOffset("slider_004"), 227u); // 0.35 of 650, just below 227.5
    applyMidiToControl(rotary, 0, false);
    applyMidiToControl(slider, 0, false);
    EXPECT_EQ(fakeSystem().timers.at(WindowTimer::midiGlide), 1u);
    midiSmoothingTick();
    EXPECT_EQ(sliderOffset("slider_004"), 148u); // 0.65 of 227
    cancelGlides();
    EXPECT_FALSE(timerRuns());
    midiSmoothingTick(); // a timer message that was already queued
    EXPECT_EQ(sliderOffset("slider_004"), 148u);
    EXPECT_EQ(panelState().master.value, 0.65);
    applyMidiToControl(slider, 1, false);
    EXPECT_EQ(fakeSystem().timers.at(WindowTimer::midiGlide), 16u);
}

TEST_F(MidiGlide, SliderStopsOneUnitShortOfSomeTargets) {
    const std::tuple<double, std::uint32_t, std::uint32_t, bool> cases[] = {
        {301.29, 300, 301, true},  {301.31, 300, 300, false}, {301.44, 300, 301, true},
        {298.69, 300, 300, false}, {298.71, 300, 299, true},  {320.4, 0, 319, false}};
    const int slider = findControl("slider_002");
    for (const auto& [target, from, offset, reached] : cases) { // offsets
        sliderOffset("slider_002") = from;
        resetFakeScreen();
        glideTo(slider, target / kSliderTravel);
        for (int tick = 0; tick < 50; ++tick) {
            midiSmoothingTick();
            EXPECT_EQ(staleControls(), Names{});
        }
        EXPECT_EQ(timerRuns(), !reached) << target;
        EXPECT_EQ(sliderOffset("slider_002"), offset) << target;
    }
}

} // namespace
} // namespace percussomatic
