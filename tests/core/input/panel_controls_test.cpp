// SPDX-License-Identifier: MIT
#include "input/panel_controls.h"

#include "cards/card_panel.h"
#include "input/panel_input.h"
#include "midi/midi_learn.h"
#include "midi/midi_state.h"
#include "panel/layout_scale.h"
#include "sequencer/tempo_text.h"
#include "support/own_folder.h"
#include "support/panel_actions.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <random>
#include <tuple>
#include <utility>

namespace percussomatic {
namespace {

Names litControls() {
    Names lit;
    for (int index = 0; index < kControlCount; ++index) {
        if (controlLit(index)) {
            lit.emplace_back(controlRow(index).name);
        }
    }
    return lit;
}

struct FrontPanel : testing::Test, FreshInstrument {};

TEST_F(FrontPanel, LampsShowTheState) {
    Sequencer& now = sequencer();
    now.pattern.set(1, 0, true);
    now.pattern.set(4, 2, true);
    now.running = true;
    EXPECT_EQ(litControls(), (Names{"bottone_017", "sw_007", "sw_016", "pw_001", "bin_001"}));
    now.currentStep = 2;
    EXPECT_EQ(litControls(), (Names{"bottone_067", "sw_007", "sw_016", "pw_001"}));
    now.editMode = true;
    EXPECT_EQ(litControls(), (Names{"bottone_017", "bottone_067", "sw_007", "sw_008", "sw_016",
                                    "pw_001", "bin_001"}));
    toggleBit("sw_001") = toggleBit(control::kClearAll) = 1; // MIDI sets bits of clear switches
    toggleBit("sw_007") = toggleBit("sw_009") = 1;
    now = Sequencer{};
    EXPECT_EQ(litControls(), (Names{"sw_001", "sw_016", "sw_018", "pw_001"}));
}

TEST_F(FrontPanel, StepButtonsToggleTheirStepAndAreLitWhileHeld) {
    for (int button = 0; button < kLineCount * kStepCount; ++button) {
        const int line = button / kStepCount, step = button % kStepCount;
        const std::string name(controlRow(stepButtonIndex(line, step)).name);
        for (const bool on : {true, false}) {
            EXPECT_EQ(press(name), Press::held);
            Pattern expected;
            expected.set(line, step, on);
            EXPECT_EQ(sequencer().pattern, expected) << name;
            EXPECT_EQ(controlLit(findControl(name)), on);
            releaseControls();
            EXPECT_FALSE(controlLit(findControl(name)));
        }
    }
}

TEST_F(FrontPanel, ClearSwitchesClearTheirLineOrAllLines) {
    const std::pair<const char*, int> cases[] = {{"sw_029", 0}, {"sw_027", 1}, {"sw_025", 2},
                                                 {"sw_023", 3}, {"sw_021", 4}, {"sw_019", 5}};
    for (const auto& [name, line] : cases) {
        sequencer().pattern.steps.fill(1);
        EXPECT_EQ(press(name), Press::held);
        EXPECT_EQ(std::ranges::count(sequencer().pattern.steps, 0), kStepCount) << name;
        EXPECT_FALSE(sequencer().pattern.isSet(line, 0) || sequencer().pattern.isSet(line, 15));
        EXPECT_TRUE(controlLit(findControl(name))) << name;
        releaseControls();
        EXPECT_FALSE(controlLit(findControl(name))) << name;
    }
    EXPECT_EQ(press(control::kClearAll), Press::held);
    EXPECT_EQ(sequencer().pattern, Pattern{});
    EXPECT_EQ(litControls(), (Names{"sw_016", "sw_018", "pw_001"}));
}

TEST_F(FrontPanel, LengthSwitchesSelectTheirLengthAndTheHiddenSwitchOnlyToggles) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"sw_009", 5},  {"sw_010", 6},  {"sw_011", 9}, {"sw_012", 10},
        {"sw_013", 12}, {"sw_015", 15}, {"sw_016", 16}};
    for (const auto& [name, length] : cases) {
        EXPECT_EQ(press(name), Press::handled);
        EXPECT_EQ(sequencer().sequenceLength, length) << name;
    }
    for (const int on : {1, 0}) {
        EXPECT_EQ(pressControl({static_cast<int>(5330 * kScale), 949}, kScale), Press::handled);
        EXPECT_EQ(toggleBit("sw_014"), on);
    }
    EXPECT_EQ(litControls(), (Names{"sw_016", "pw_001"}));
}

TEST_F(FrontPanel, PowerSwitchSilencesTheInstrumentForGood) {
    const PixelRect rect = controlClientRect(findControl(control::kPower), kScale);
    sequencer().pattern.set(3, 0, true);
    press(control::kStartStop);
    passTimeTo(100 * kNsPerMs);
    EXPECT_EQ(pressControl({rect.left, rect.top}, kScale), Press::handled); // every drawn pixel
    EXPECT_EQ(soundEngine().masterVolume, 0.0f);
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest, 1);
    EXPECT_EQ(fakeSystem().timers[WindowTimer::powerOff], 1000u);
    EXPECT_EQ(litControls(), Names{"sw_016"});
    EXPECT_EQ(staleControls(), Names{});
    passTimeTo(1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks(), std::vector<PostedTick>{});

    fakeSystem().timers.clear();
    press(control::kPower);
    EXPECT_TRUE(fakeSystem().timers.empty()) << "the delay is not restarted";
    press(control::kEdit);
    press(control::kEdit);
    EXPECT_EQ(soundEngine().outputMuted, 1);
}

TEST_F(FrontPanel, RotaryDragCoversItsRangeIn420PixelsUpwards) {
    const std::tuple<double, int, bool, double> cases[] = {{0.0, 420, false, 1.0},
                                                           {0.0, 420, true, 0.25},
                                                           {0.5, -1000, false, 0.0},
                                                           {0.5, 30000, false, 1.0}};
    for (const auto& [from, up, fine, to] : cases) {
        for (const std::string_view name : {control::kMasterRotary, control::kTempoRotary}) {
            rotaryState(findControl(name))->value = from;
            const PixelPoint begin = centreOf(name);
            ASSERT_EQ(pressControl(begin, kScale), Press::held);
            EXPECT_TRUE(dragControl({begin.x, begin.y - up}, kScale, fine));
            releaseControls();
            EXPECT_EQ(staleControls(), Names{});
        }
        EXPECT_FLOAT_EQ(soundEngine().masterVolume, static_cast<float>(to * to));
        EXPECT_DOUBLE_EQ(sequencer().bpm, 40.0 + 200.0 * to);
    }
    EXPECT_FALSE(dragControl({}, kScale, true)) << "after the release";
}

TEST_F(FrontPanel, RotaryDragIsPaintedAtMostEveryEightMilliseconds) {
    const PixelPoint begin = centreOf(control::kMasterRotary);
    ASSERT_EQ(pressControl(begin, kScale), Press::held);
    const std::tuple<std::int64_t, int, bool> cases[] = {
        {1000, 0, false},        {1000, 1, true},       {1007, 3, false},
        {1008, 3, false},        {1008, 4, true},       {0xFFFFFFFD, 5, true},
        {0x100000004, 7, false}, {0x100000005, 8, true}}; // the count wraps
    for (const auto& [ms, below, painted] : cases) {
        passTimeTo(ms * kNsPerMs);
        dragControl({begin.x, begin.y + below}, kScale, false);
        EXPECT_DOUBLE_EQ(panelState().master.value, 1.0 - below / 420.0);
        EXPECT_EQ(takeRedraws(), painted ? Names{"rotary_001 now"} : Names{}) << ms;
    }
}

TEST_F(FrontPanel, WheelTurnsTheRotaryUnderThePointer) {
    const PixelPoint tempo = centreOf(control::kTempoRotary);
    EXPECT_TRUE(turnWheel(tempo, kScale, 120, false));
    EXPECT_NEAR(sequencer().bpm, 125.0, 1e-9);
    EXPECT_TRUE(turnWheel(tempo, kScale, -120, true));
    EXPECT_NEAR(sequencer().bpm, 124.0, 1e-9);
    EXPECT_FALSE(turnWheel(tempo, kScale, 0, false));
    ASSERT_EQ(pressControl(tempo, kScale), Press::held);
    EXPECT_TRUE(turnWheel(tempo, kScale, 7200, false));
    EXPECT_NEAR(sequencer().bpm, 240.0, 1e-9);
    dragControl({tempo.x, tempo.y + 42}, kScale, false);
    EXPECT_NEAR(sequencer().bpm, 104.0, 1e-9) << "the drag is still relative to its start";
}

TEST(TempoText, IsOneNumberInRangeWithBlanksAround) {
    const std::pair<const wchar_t*, std::optional<double>> cases[] = {
        {L"40", 40.0},        {L"240", 240.0},    {L"39.999", {}}, {L"240.001", {}},
        {L"120.5", 120.5},    {L"+1.2e2", 120.0}, {L"-120", {}},   {L"1e999", {}},
        {L" \t\n120", 120.0}, {L"120  ", 120.0},  {L"120 \t", {}}, {L"120 1", {}},
        {L"120x", {}},        {L"", {}},          {L"  ", {}},     {L"nan", {}}};
    for (const auto& [text, bpm] : cases) {
        EXPECT_EQ(parseTempo(text), bpm) << text;
    }
}

TEST_F(FrontPanel, TypedTempoIsClampedMovesTheRotaryAndEndsItsDrag) {
    press(control::kTempoRotary);
    setTempoBpm(1e9);
    EXPECT_EQ(sequencer().bpm, 240.0);
    EXPECT_EQ(panelState().tempo.value, 1.0);
    dragControl({0, 5000}, kScale, false);
    EXPECT_EQ(sequencer().bpm, 240.0);
}

TEST_F(FrontPanel, SliderFollowsThePointerBetweenItsEnds) {
    const std::uint32_t& offset = sliderOffset("slider_003");
    ASSERT_EQ(pressControl({380, 1100}, 0.5), Press::held); // half size: two units per pixel
    const std::pair<int, std::uint32_t> cases[] = {
        {380, 0}, {1000, 650}, {704, 648}, {-20, 0}, {480, 200}};
    for (const auto& [x, expected] : cases) {
        dragControl({x, 0}, 0.5, false);
        EXPECT_EQ(offset, expected) << x;
        EXPECT_EQ(staleControls(), Names{});
    }
    EXPECT_FLOAT_EQ(lineVolume(2), 200.0f / 650.0f);
    releaseControls();
    EXPECT_FALSE(dragControl({0, 0}, 0.5, false));
    EXPECT_EQ(pressControl({380, 1100}, 0.5), Press::none) << "the thumb has moved";
    ASSERT_EQ(pressControl({480, 1100}, 0.5), Press::held);
    dragControl({481, 0}, 0.5, false);
    EXPECT_EQ(offset, 202u);
    dragControl({5000, 0}, 0.0, false); // the window has no size
    EXPECT_EQ(offset, 0u);
}

TEST_F(FrontPanel, EveryInputReturnsItsRequest) {
    using enum Request;
    const OwnFolder folder; // for the layout scale
    constexpr Size kClient{kClientWidth, kClientHeight};
    const PanelRects rects = cardPanelRects(kClient);
    const PixelPoint bare = centreOf(control::kBeatLamp), rotary = centreOf(control::kTempoRotary);
    const PixelRect edit = controlClientRect(findControl(control::kEdit), kScale);
    const PixelRect step =
        controlClientRect(findControl("bottone_041"), kScale); // behind the dialog
    const std::pair<Request, PixelRect> presses[] = {{showEffects, rects.effects},
                                                     {showMidi, rects.midi},
                                                     {showInfo, rects.info},
                                                     {askTempo, rects.bpm},
                                                     {captureMouse, step},
                                                     {none, rects.cards},
                                                     {none, rects.nextCard},
                                                     {none, rects.nextCard},
                                                     {none, rects.previousCard},
                                                     {askTitle, rects.title},
                                                     {none, step},
                                                     {none, rects.cancel},
                                                     {captureMouse, step},
                                                     {none, edit}};
    for (const auto& [request, rect] : presses) {
        EXPECT_EQ(pressPanel(centreOf(rect), kClient).request, request) << rect.left;
    }
    EXPECT_EQ(pressPanel(rotary, kClient).request, captureMouse);
    EXPECT_EQ(cardPanel().dialogSlot, 1);
    EXPECT_EQ(movePointer(bare, kClient, false).request, none);
    EXPECT_EQ(releasePointer().request, releaseMouse);
    EXPECT_EQ(pressPanel(bare, kClient).request, captureMouse);
    const InputResult moved = movePointer({bare.x + 10, bare.y - 3}, kClient, false);
    EXPECT_EQ(moved.request, moveWindow);
    EXPECT_EQ(std::pair(moved.distance.x, moved.distance.y), std::pair(10, -3));
    releasePointer();
    EXPECT_EQ(movePointer({}, kClient, false).request, none);

    layoutScale() = 1.0;
    cardPanel().cardInserted = true;
    setTempoBpm(120.0);
    EXPECT_EQ(turnWheelAt(rotary, kClient, {120, false, true}).request, none);
    EXPECT_NEAR(sequencer().bpm, 121.0, 1e-9) << "a fine step";
    EXPECT_TRUE(cardPanel().cardInserted);
    EXPECT_EQ(turnWheelAt(bare, kClient, {120, false, false}).request, defaultHandling);
    EXPECT_EQ(turnWheelAt(rotary, kClient, {-120, true, false}).request, resizeWindow);
    EXPECT_FALSE(cardPanel().cardInserted);
    EXPECT_EQ(pressKey(Key::plus, true).request, resizeWindow);
    EXPECT_EQ(pressKey(Key::plus, true).request, none) << "at the largest size";
    EXPECT_EQ(pressKey(Key::minus, true).request, resizeWindow);
    EXPECT_EQ(readLayoutScale(kLayoutScaleFile), 1.0 - kLayoutScaleStep);
    EXPECT_EQ(pressKey(Key::plus, false).request, defaultHandling);
    EXPECT_EQ(pressKey(Key::minus, false).request, defaultHandling);
    toggleCardsDialog();
    EXPECT_EQ(pressKey(Key::escape, false).request, none);
    EXPECT_EQ(pressKey(Key::escape, false).request, closeWindow);
    EXPECT_EQ(fireTimer(WindowTimer::midiGlide).request, none);
    startTimer(WindowTimer::powerOff, 1000);
    EXPECT_EQ(fireTimer(WindowTimer::powerOff).request, closeWindow);
    EXPECT_TRUE(fakeSystem().timers.empty());
    sequencer().externalSync = true;
    EXPECT_EQ(pressPanel(centreOf(rects.bpm), kClient).request, explainExternalTempo);
    armMidiLearn();
    EXPECT_EQ(pressPanel(centreOf(step), kClient).request, none);
    EXPECT_EQ(midiState().learnTargetId, "bottone_041");
}

// After any sequence of actions, the screen shows the state of the instrument.
TEST_F(FrontPanel, NothingOnTheScreenIsEverStale) {
    std::mt19937 random(1965); // produces the same numbers everywhere
    const auto upTo = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const auto anyControl = [&] { return centreOf(upTo(kControlCount)); };
    const std::function<void()> actions[] = {
        [&] { press(upTo(2) == 0 ? control::kStartStop : control::kEdit); },
        [&] { press(control::kLengthSwitches[0]); },
        [&] { pressControl(anyControl(), kScale); },
        [&] {
            dragControl({upTo(400), upTo(400)}, kScale, upTo(2) == 0);
            releaseControls();
        },
        [&] { turnWheel(centreOf(control::kTempoRotary), kScale, upTo(720) - 360, false); },
        [&] { setTempoBpm(upTo(300)); },
        onClockTick};
    for (int count = 0; count < 4000; ++count) {
        const int choice = upTo(static_cast<int>(std::size(actions)));
        actions[choice]();
        ASSERT_EQ(staleControls(), Names{}) << "action " << count << ": " << choice;
        ASSERT_EQ(fakeSystem().awake, sequencer().running);
    }
}

} // namespace
} // namespace percussomatic
