#include "midi/midi_mapping.h"
#include "panel/panel_state.h"
#include "sequencer/transport.h"

#include "midi/midi_learn.h"
#include "midi/midi_message.h"
#include "midi/midi_state.h"
#include "sequencer/sequencer.h"
#include "support/fake_midi.h"
#include "support/fake_screen.h"
#include "support/panel_actions.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace percussomatic {
namespace {

void learn(std::string_view name, int channel, int controller, int value) {
    armMidiLearn();
    EXPECT_TRUE(learnClick(centreOf(name), kScale));
    handleControlChange(channel, controller, value);
}

class MidiMappings : public testing::Test {
protected:
    FreshMidi instrument_;
};

TEST_F(MidiMappings, ShowsWhatArrives) {
    const std::pair<std::uint32_t, const wchar_t*> cases[] = {
        {0x407B90, L"Received: NOTE ON 123 Value 64 CH 1"},
        {0x007B9F, L"Received: NOTE OFF 123 Value 0 CH 16"}, // velocity 0
        {0x7F15B0, L"Received: CC 21 Value 127 CH 1"},
        {0x4001E0, L"Received: PITCH BEND 8193 CH 1"},
        {0x7F7FEF, L"Received: PITCH BEND 16383 CH 16"}};
    constexpr std::uint32_t kNotShown[] = {0x4040A0, 0x0040C0, 0x0040D3, 0x0000F0, 0x4040F2,
                                           0x0000F8, 0x0000FA, 0x0000FE, 0x0000FF, 0x407B10};
    for (const auto& [message, text] : cases) {
        handleMidiMessage(message);
        EXPECT_EQ(fakeSystem().learnLine, text);
        EXPECT_EQ(midiState().learnStatusText, text);
        for (const std::uint32_t other : kNotShown) {
            handleMidiMessage(other);
            EXPECT_EQ(fakeSystem().learnLine, text) << std::hex << other;
        }
    }
}

TEST_F(MidiMappings, LearnTakesTheTopmostControlUnderTheClick) {
    const auto expectTarget = [](PixelPoint click, const std::string& target) {
        SCOPED_TRACE(testing::Message() << click.x << ", " << click.y << ": " << target);
        armMidiLearn();
        EXPECT_TRUE(learnClick(click, kScale));
        EXPECT_EQ(midiState().learnWaitingForMidi, !target.empty());
        EXPECT_EQ(midiState().learnTargetId, target);
        EXPECT_EQ(fakeSystem().learnLine,
                  target.empty()
                      ? L"Learn: click a rotary, slider or button"
                      : L"Move a MIDI control for: " + std::wstring(target.begin(), target.end()));
        EXPECT_EQ(learnClick(click, kScale), target.empty()) << "only as long as it is armed";
    };
    expectTarget(centreOf("rotary_001"), "rotary_001");
    expectTarget(centreOf("bottone_096"), "bottone_096");
    expectTarget(centreOf("sw_014"), "sw_015"); // lies on top
    expectTarget(centreOf("bin_001"), "");
    const PixelRect power = controlClientRect(findControl("pw_001"), kScale);
    ASSERT_FALSE(hitsControl(findControl("pw_001"), {power.left, power.top}, kScale));
    expectTarget({power.left, power.top}, "pw_001"); // every pixel that is drawn
    expectTarget({power.right, power.bottom - 1}, "");
    const PixelPoint sliderAtRest = centreOf("slider_003");
    sliderOffset("slider_003") = 400;
    expectTarget(centreOf("slider_003"), "slider_003");
    expectTarget(sliderAtRest, ""); // only the thumb
    EXPECT_EQ(takeRedraws(), Names{});
}

TEST_F(MidiMappings, LearnEndsWithAControlChangeThatMovesNothing) {
    midiState().profileDeviceName = L"Keys";
    handleControlChange(2, 7, 127);
    EXPECT_EQ(fakeSystem().learnLine, L"Received: CC 7 Value 127 CH 3");
    learn("sw_001", 2, 7, 100);
    EXPECT_EQ(fakeSystem().learnLine, L"Mapped sw_001 to CC 7 / CH 3");
    EXPECT_EQ(midiState().mappings, (std::vector<MidiMapping>{{"sw_001", 2, 7}}));
    EXPECT_EQ(settingsText(), L"[GENERAL]\nLastMidiDevice=Keys\n[DEVICE:Keys]\nsw_001=2,7\n");
    handleControlChange(2, 7, 127);
    EXPECT_EQ(toggleBit("sw_001"), 0) << "it was above 63 already when it was learned";
    handleControlChange(2, 7, 0);
    handleControlChange(2, 7, 64);
    EXPECT_EQ(toggleBit("sw_001"), 1);
    handleControlChange(3, 7, 0);
    handleControlChange(2, 8, 0);
    handleControlChange(2, 7, 127);
    EXPECT_EQ(toggleBit("sw_001"), 1) << "another channel and another controller";

    learn("rotary_001", 0, 1, 0);
    EXPECT_TRUE(fakeSystem().timers.empty()) << "nothing glides";

    armMidiLearn();
    learnClick(centreOf("sw_002"), kScale);
    clearMidiMappings();
    EXPECT_EQ(fakeSystem().learnLine, L"All MIDI mappings cleared");
    EXPECT_EQ(settingsText(), L"[GENERAL]\nLastMidiDevice=Keys\n");
    handleControlChange(2, 7, 0);
    EXPECT_TRUE(midiState().mappings.empty()) << "the learn has ended";
    EXPECT_EQ(midiState().ccLastValue[2][7], 127) << "kept for mapped ones only";
}

TEST_F(MidiMappings, FirstMappingDecidesAndNamesAreFoundInAnyCase) {
    midiState().mappings = {{"no_such", 0, 1}, {"sw_001", 0, 1}, {"SW_002", 0, 2}};
    handleControlChange(0, 1, 127);
    EXPECT_EQ(toggleBit("sw_001"), 0);
    handleControlChange(0, 2, 127);
    EXPECT_EQ(toggleBit("sw_002"), 1);
}

TEST_F(MidiMappings, SwitchesFlipAtRisingEdgesAndClearSwitchesFollow) {
    const struct {
        int value, edge, level; // bits afterwards
    } cases[] = {{63, 0, 0}, {64, 1, 1}, {127, 1, 1}, {64, 1, 1}, {63, 1, 0},
                 {64, 0, 1}, {0, 0, 0},  {127, 1, 1}, {0, 1, 0},  {127, 0, 1}};
    Pattern allSet;
    allSet.steps.fill(1);
    sequencer().pattern = allSet;
    for (const std::string name :
         {"sw_001", "sw_014", "sw_017", "bottone_018", "pw_001", "sw_018", "sw_029"}) {
        const bool clears = name == "sw_018" || name == "sw_029";
        midiState().mappings = {{name, 5, 6}};
        midiState().ccLastValue[5][6] = 0; // as at start-up: the first may be a rising edge
        int before = toggleBit(name) = 0;
        for (const auto& [value, edge, level] : cases) {
            SCOPED_TRACE(name + " at " + std::to_string(value));
            takeRedraws();
            handleControlChange(5, 6, value);
            const int now = clears ? level : edge;
            EXPECT_EQ(toggleBit(name), now);
            EXPECT_EQ(takeRedraws(), now == before ? Names{} : Names{name + " now"});
            before = now;
        }
    }
    EXPECT_EQ(sequencer().pattern.steps, allSet.steps);
    EXPECT_FALSE(panelState().powerOffPending);
    EXPECT_EQ(staleControls(), Names{});
}

TEST_F(MidiMappings, StartSwitchByMidiPlaysNoFirstStep) {
    Sequencer& now = sequencer();
    now.pattern.set(0, 0, true);
    now.pattern.set(0, 3, true);
    now.currentStep = 3;
    sliderOffset("slider_001") = 650;
    toggleBit("sw_001") = 1;
    const int start = findControl("sw_007");
    applyMidiToControl(start, 127, false);
    EXPECT_FALSE(now.running) << "no rising edge";
    takeRedraws();
    applyMidiToControl(start, 127, true);
    EXPECT_EQ(now.currentStep, 0u);
    EXPECT_EQ(takeRedraws(), (Names{"sw_007 later", "bin_001 later", "flush"})) << "no column";
    EXPECT_EQ(takeVoices(), 0);
    passTimeTo(1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 8u);
    applyMidiToControl(start, 127, true);
    EXPECT_FALSE(now.running);
}

TEST_F(MidiMappings, LengthByMidiLeavesTheStepToTheNextTick) {
    Sequencer& now = sequencer();
    now.running = true;
    now.currentStep = 11;
    resetFakeScreen();
    for (int time = 0; time < 2; ++time) {
        applyMidiToControl(findControl("sw_011"), 127, true);
        EXPECT_EQ(now.sequenceLength, 9u);
        EXPECT_EQ(now.currentStep, 11u);
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(takeRedraws().empty(), time > 0) << "the second time it has that length";
    }
    onStepTick();
    EXPECT_EQ(now.currentStep, 3u);
    applyMidiToControl(findControl("sw_008"), 127, true);
    EXPECT_TRUE(now.editMode);
    EXPECT_EQ(soundEngine().outputMuted, 1);
}

} // namespace
} // namespace percussomatic
