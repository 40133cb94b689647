#include "input/panel_controls.h"

#include "audio/sound_engine.h"
#include "panel/panel_state.h"
#include "sequencer/lamps.h"
#include "sequencer/sequencer.h"
#include "sequencer/tempo_text.h"
#include "sequencer/transport.h"
#include "support/fake_screen.h"
#include "support/fake_system.h"
#include "support/panel_actions.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <random>
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

class FrontPanel : public testing::Test {
protected:
    FreshInstrument instrument_;
};

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
    now.running = now.editMode = false;
    now.heldStepButton = stepButtonIndex(1, 0);
    EXPECT_EQ(litControls(), (Names{"bottone_017", "sw_016", "pw_001"}));

    // The others by their bits, the clear switches too, but no step, start, edit or length.
    now = Sequencer{};
    controlState().toggleBits.fill(1);
    toggleBit("pw_001") = 0;
    EXPECT_EQ(litControls(),
              (Names{"sw_001", "sw_002", "sw_003", "sw_004", "sw_005", "sw_006", "sw_014",
                     "sw_016", "sw_017", "sw_018", "sw_019", "sw_020", "sw_021", "sw_022",
                     "sw_023", "sw_024", "sw_025", "sw_026", "sw_027", "sw_028", "sw_029"}));
}

TEST_F(FrontPanel, StepButtonsToggleTheirStepAndShowItWhileHeld) {
    for (int button = 0; button < kLineCount * kStepCount; ++button) {
        const int line = button / kStepCount, step = button % kStepCount;
        const std::string name(
            controlRows()[static_cast<std::size_t>(stepButtonIndex(line, step))].name);
        for (const bool on : {true, false}) {
            EXPECT_EQ(press(name), Press::held);
            Pattern expected;
            expected.set(line, step, on);
            EXPECT_EQ(sequencer().pattern.steps, expected.steps) << name;
            EXPECT_EQ(controlLit(findControl(name)), on);
            releaseControls();
            EXPECT_EQ(takeRedraws(), (Names{name + " now", name + " now"}));
        }
    }
    releaseControls();
    EXPECT_EQ(takeRedraws(), Names{}) << "nothing is held any more";
}

TEST_F(FrontPanel, ClearSwitchesClearTheirLineOrAll) {
    const std::pair<const char*, int> cases[] = {{"sw_029", 0}, {"sw_027", 1}, {"sw_025", 2},
                                                 {"sw_023", 3}, {"sw_021", 4}, {"sw_019", 5},
                                                 {"sw_018", -1}}; // -1: all
    for (const auto& [name, line] : cases) {
        SCOPED_TRACE(name);
        sequencer().pattern.steps.fill(1);
        EXPECT_EQ(press(name), Press::held);
        Pattern expected;
        expected.steps.fill(line < 0 ? 0 : 1);
        for (int step = 0; line >= 0 && step < kStepCount; ++step) {
            expected.set(line, step, false);
        }
        EXPECT_EQ(sequencer().pattern.steps, expected.steps);
        EXPECT_TRUE(controlLit(findControl(name)));
        releaseControls();
        EXPECT_FALSE(controlLit(findControl(name)));
    }
}

TEST_F(FrontPanel, SwitchesChooseTheirLengthAndTheOneUnderAnotherNothing) {
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"sw_009", 5},  {"sw_010", 6},  {"sw_011", 9}, {"sw_012", 10},
        {"sw_013", 12}, {"sw_015", 15}, {"sw_016", 16}};
    for (const auto& [name, length] : cases) {
        EXPECT_EQ(press(name), Press::handled);
        EXPECT_EQ(sequencer().sequenceLength, length) << name;
    }
    takeRedraws();
    for (const bool on : {true, false}) {
        EXPECT_EQ(pressControl({static_cast<int>(5330 * kScale), 949}, kScale), Press::handled);
        EXPECT_EQ(toggleBit("sw_014"), on ? 1 : 0);
        EXPECT_EQ(takeRedraws(), Names{"sw_014 now"});
    }
    EXPECT_EQ(press("bin_001"), Press::none);
    EXPECT_EQ(pressControl(centreOf("sw_007"), 0.0), Press::none);
    EXPECT_EQ(litControls(), (Names{"sw_016", "pw_001"}));
}

TEST_F(FrontPanel, PowerSwitchTurnsEverythingOffForGood) {
    const PixelRect rect = controlClientRect(findControl("pw_001"), kScale); // all of it counts
    sequencer().pattern.set(3, 0, true);
    press("sw_007");
    passTimeTo(100 * kNsPerMs);
    EXPECT_EQ(pressControl({rect.left, rect.top}, kScale), Press::handled);
    EXPECT_EQ(soundEngine().masterVolume, 0.0f);
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest, 1);
    EXPECT_EQ(fakeSystem().timers[WindowTimer::powerOff], 1000u);
    EXPECT_EQ(litControls(), Names{"sw_016"});
    EXPECT_EQ(takeRedraws().back(), "flush");
    passTimeTo(1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks(), std::vector<PostedTick>{});

    fakeSystem().timers.clear();
    EXPECT_EQ(press("pw_001"), Press::handled);
    EXPECT_TRUE(fakeSystem().timers.empty()) << "the second goes on to its end";
    EXPECT_EQ(toggleBit("pw_001"), 0);
    press("sw_008");
    press("sw_008");
    EXPECT_EQ(soundEngine().outputMuted, 1);
}

TEST_F(FrontPanel, RotaryDragTurnsFullyIn420PixelsUpwards) {
    const auto expectTurned = [](double from, int up, bool fine, double to) {
        SCOPED_TRACE(testing::Message() << from << " up " << up); // client pixels
        for (const char* name : {"rotary_001", "rotary_002"}) {
            rotaryState(findControl(name))->value = from;
            const PixelPoint begin = centreOf(name);
            ASSERT_EQ(pressControl(begin, kScale), Press::held);
            EXPECT_TRUE(dragControl({begin.x, begin.y - up}, kScale, fine));
            releaseControls();
            EXPECT_EQ(staleControls(), Names{});
        }
        EXPECT_FLOAT_EQ(soundEngine().masterVolume, static_cast<float>(to * to));
        EXPECT_DOUBLE_EQ(sequencer().bpm, 40.0 + 200.0 * to);
    };
    expectTurned(0.0, 420, false, 1.0);
    expectTurned(0.0, 420, true, 0.25);
    expectTurned(0.5, -1000, false, 0.0);
    expectTurned(0.5, 30000, false, 1.0);
    EXPECT_FALSE(dragControl({}, kScale, true)) << "after its end";
    EXPECT_DOUBLE_EQ(sequencer().bpm, 240.0);
}

TEST_F(FrontPanel, RotaryDragPaintsEveryEightMilliseconds) {
    const PixelPoint begin = centreOf("rotary_001");
    ASSERT_EQ(pressControl(begin, kScale), Press::held);
    const auto paintsAt = [&](std::uint32_t tickMs, int below) {
        fakeSystem().tickCountMs = tickMs;
        dragControl({begin.x, begin.y + below}, kScale, false);
        const double value = 1.0 - below / 420.0;
        EXPECT_FLOAT_EQ(soundEngine().masterVolume, static_cast<float>(value * value)) << "applied";
        return takeRedraws() == Names{"rotary_001 now"};
    };
    EXPECT_FALSE(paintsAt(1000, 0)) << "no change";
    EXPECT_TRUE(paintsAt(1000, 1));
    EXPECT_FALSE(paintsAt(1007, 3));
    EXPECT_FALSE(paintsAt(1008, 3)) << "no change again";
    EXPECT_TRUE(paintsAt(1008, 4));
    EXPECT_TRUE(paintsAt(0xFFFFFFFD, 5));
    EXPECT_FALSE(paintsAt(4, 7)) << "the count has wrapped";
    EXPECT_TRUE(paintsAt(5, 8));
    releaseControls();
    EXPECT_EQ(takeRedraws(), Names{"rotary_001 now"});
    releaseControls();
    EXPECT_EQ(takeRedraws(), Names{});
}

TEST_F(FrontPanel, WheelTurnsTheRotaryUnderIt) {
    const auto bpmAfter = [](double from, int delta, bool fine) {
        panelState().tempo.value = from;
        setTempoFromRotary(from);
        EXPECT_EQ(turnWheel(centreOf("rotary_002"), kScale, delta, fine), delta != 0);
        return sequencer().bpm;
    };
    EXPECT_NEAR(bpmAfter(0.4, 120, false), 125.0, 1e-9);
    EXPECT_NEAR(bpmAfter(0.4, -120, true), 119.0, 1e-9);
    EXPECT_NEAR(bpmAfter(0.99, 360, false), 240.0, 1e-9);
    EXPECT_NEAR(bpmAfter(0.4, 0, false), 120.0, 1e-9);
    EXPECT_FALSE(turnWheel(centreOf("slider_001"), kScale, 120, false));
    const PixelPoint master = centreOf("rotary_001");
    ASSERT_EQ(pressControl(master, kScale), Press::held);
    EXPECT_TRUE(turnWheel(master, kScale, -120, false));
    EXPECT_NEAR(soundEngine().masterVolume, 0.975 * 0.975, 1e-6);
    dragControl({master.x, master.y + 210}, kScale, false);
    EXPECT_EQ(panelState().master.value, 0.5) << "the drag still counts from where it began";
}

TEST(TempoText, IsOneNumberInRangeWithBlanksAround) {
    const std::pair<const wchar_t*, std::optional<double>> cases[] = {
        {L"40", 40.0},        {L"240", 240.0},    {L"39.999", {}}, {L"240.001", {}},
        {L"120.5", 120.5},    {L"+1.2e2", 120.0}, {L"-120", {}},   {L"1e999", {}},
        {L" \t\n120", 120.0}, {L"120  ", 120.0},  {L"120 \t", {}}, {L"120 1", {}},
        {L"120x", {}},        {L"000100", 100.0}, {L"", {}},       {L"  ", {}},
        {L"nan", {}},         {L"inf", {}}};
    for (const auto& [text, bpm] : cases) {
        EXPECT_EQ(parseTempo(text), bpm) << text;
    }
}

TEST_F(FrontPanel, TypedTempoIsClampedTurnsTheRotaryAndEndsItsDrag) {
    const struct {
        double typed, bpm, value;
    } cases[] = {{140.0, 140.0, 0.5}, {39.9, 40.0, 0.0}, {1e9, 240.0, 1.0}};
    for (const auto& [typed, bpm, value] : cases) {
        SCOPED_TRACE(typed);
        panelState().tempo = {.value = 0.7, .dragStartValue = 0.6, .dragging = true};
        takeRedraws();
        setTempoBpm(typed);
        EXPECT_EQ(sequencer().bpm, bpm);
        EXPECT_DOUBLE_EQ(panelState().tempo.value, value);
        EXPECT_DOUBLE_EQ(panelState().tempo.dragStartValue, value);
        EXPECT_FALSE(panelState().tempo.dragging);
        EXPECT_EQ(takeRedraws(), (Names{"tempo box", "rotary_002 now"}));
        EXPECT_EQ(staleControls(), Names{});
    }
}

TEST_F(FrontPanel, SliderFollowsTheCursorBetweenItsEnds) {
    const std::uint32_t& offset = sliderOffset("slider_003");
    const auto expectAt = [&](int x, std::uint32_t expected) { // half size: two units a pixel
        const Names from{"slider_003 from " + std::to_string(offset)};
        const bool moves = offset != expected;
        dragControl({x, 0}, 0.5, false);
        EXPECT_EQ(offset, expected) << x;
        EXPECT_EQ(takeRedraws(), moves ? from : Names{}) << x;
    };
    ASSERT_EQ(pressControl({380, 1100}, 0.5), Press::held);
    expectAt(380, 0);
    expectAt(430, 100);
    expectAt(1000, 650);
    expectAt(704, 648);
    expectAt(-20, 0);
    expectAt(480, 200);
    releaseControls();
    EXPECT_FALSE(dragControl({600, 0}, 0.5, false));
    EXPECT_FLOAT_EQ(lineVolume(2), 200.0f / 650.0f);

    EXPECT_EQ(pressControl({380, 1100}, 0.5), Press::none) << "it is no longer there";
    ASSERT_EQ(pressControl({480, 1100}, 0.5), Press::held);
    expectAt(481, 202);                 // from where it was
    dragControl({5000, 0}, 0.0, false); // the window has gone: as at its left edge
    EXPECT_EQ(offset, 0u);
}

// Whatever a hand does in whatever order, even after the power has gone, the screen shows the state
// of the machine afterwards.
TEST_F(FrontPanel, NothingOnTheScreenIsEverStale) {
    std::mt19937 random(1965); // the engine's numbers are the same everywhere
    const auto upTo = [&random](int count) {
        return static_cast<int>(random() % static_cast<unsigned>(count));
    };
    const std::function<void()> acts[] = {
        [&] {
            press(upTo(2) == 0 ? "sw_007" : upTo(2) == 0 ? "sw_008" : "sw_009");
        },
        [&] {
            turnWheel(centreOf(upTo(2) == 0 ? "rotary_001" : "rotary_002"), kScale, upTo(720) - 360,
                      upTo(2) == 0);
        },
        [&] {
            pressControl(centreOf(upTo(kControlCount)), kScale);
            dragControl({upTo(400), upTo(400)}, kScale, upTo(2) == 0);
            releaseControls();
        },
        [&] { setTempoBpm(upTo(300)); },
        onStepTick,
        [&] { pressControl(centreOf(upTo(kControlCount)), kScale); },
        releaseControls};
    for (int act = 0; act < 2000; ++act) {
        const int choice = upTo(static_cast<int>(std::size(acts)));
        acts[choice]();
        ASSERT_EQ(staleControls(), Names{}) << "act " << act << ": " << choice;
    }
}

} // namespace
} // namespace percussomatic
