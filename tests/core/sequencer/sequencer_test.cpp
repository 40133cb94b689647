#include "sequencer/sequencer.h"

#include "audio/sound_engine.h"
#include "sequencer/lamps.h"
#include "sequencer/pattern_edits.h"
#include "sequencer/transport.h"
#include "support/fake_screen.h"
#include "support/fake_system.h"
#include "support/panel_actions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace percussomatic {
namespace {

using Hit = std::pair<int, float>; // instrument 0..11 (2 x line, + 1 for B), gain
using Hits = std::vector<Hit>;

class SequencerTest : public testing::Test {
protected:
    // The line can be heard: both instruments on, the slider at this offset.
    static void openLine(int line, std::uint32_t offset = kSliderTravel) {
        const control::Line& names = control::line(line);
        toggleBit(names.switches[0]) = toggleBit(names.switches[1]) = 1;
        sliderOffset(names.slider) = offset;
    }

    // What has been triggered since the last call, in order; the voices are idle again.
    static Hits takeHits() {
        Hits hits;
        const auto& indices = sequencer().sampleIndices;
        for (const Voice& voice : soundEngine().voices) {
            if (voice.active) {
                const auto* const found =
                    std::find(indices.begin(), indices.end(), voice.sampleIndex);
                hits.emplace_back(static_cast<int>(found - indices.begin()), voice.gain);
            }
        }
        soundEngine().deactivateAllVoices();
        return hits;
    }

    static void setSteps(const std::vector<std::pair<int, int>>& lineAndStep) {
        for (const auto& [line, step] : lineAndStep) {
            sequencer().pattern.set(line, step, true);
        }
    }

    FreshInstrument instrument_;
};

TEST_F(SequencerTest, StepPlaysItsLinesInOrderABeforeBAndLeavesSilentOnesOut) {
    for (int line = 0; line < kLineCount; ++line) {
        openLine(line, 650 - 130 * static_cast<std::uint32_t>(line)); // the last at 0
    }
    toggleBit("sw_026") = 0;
    setSteps({{0, 2}, {1, 2}, {4, 2}, {5, 2}, {3, 15}, {1, 0}});
    sequencer().sampleIndices[8] = -1; // could not be loaded
    const std::pair<std::uint32_t, Hits> cases[] = {
        {2, {{0, 1.0f}, {1, 1.0f}, {2, 0.8f}, {9, 130.0f / 650.0f}}},
        {15, {{6, 0.4f}, {7, 0.4f}}},
        {3, {}},
        {16, {}}};
    for (const auto& [step, hits] : cases) {
        triggerStep(step);
        EXPECT_EQ(takeHits(), hits) << "step " << step;
    }
}

TEST_F(SequencerTest, EverySwitchSoundsItsOwnInstrument) {
    const char* const switches[] = {"sw_001", "sw_028", "sw_002", "sw_026", "sw_003", "sw_024",
                                    "sw_004", "sw_022", "sw_005", "sw_020", "sw_006", "sw_017"};
    for (int line = 0; line < kLineCount; ++line) {
        sliderOffset(control::line(line).slider) = kSliderTravel;
        sequencer().pattern.set(line, 0, true);
    }
    for (int instrument = 0; instrument < 2 * kLineCount; ++instrument) {
        toggleBit(switches[instrument]) = 1;
        triggerStep(0);
        EXPECT_EQ(takeHits(), (Hits{{instrument, 1.0f}})) << switches[instrument];
        toggleBit(switches[instrument]) = 0;
    }
}

TEST_F(SequencerTest, StartSoundsAtOnceAndTicksGoRoundTheLength) {
    openLine(0);
    openLine(1);
    setSteps({{0, 0}, {1, 4}});
    sequencer().currentStep = 3;
    for (const std::uint32_t length : {5u, 6u, 15u, 1u}) {
        SCOPED_TRACE(length);
        sequencer().sequenceLength = length;
        toggleRunning();
        for (std::uint32_t played = 0; played < 2 * length + 1; ++played) {
            const std::uint32_t step = played % length;
            EXPECT_EQ(sequencer().currentStep, step);
            EXPECT_EQ(beatLampLit(), step == 0);
            const Hits first{{0, 1.0f}, {1, 1.0f}}, fifth{{2, 1.0f}, {3, 1.0f}};
            EXPECT_EQ(takeHits(), step == 0 ? first : step == 4 ? fifth : Hits{});
            onStepTick();
        }
        takeHits();
        toggleRunning();
        const std::uint32_t stoppedAt = sequencer().currentStep;
        onStepTick(); // one that was still in the queue
        EXPECT_EQ(sequencer().currentStep, stoppedAt);
        EXPECT_EQ(takeHits(), Hits{});
        EXPECT_FALSE(beatLampLit());
    }
}

TEST_F(SequencerTest, EditModeIsSilentButGoesOn) {
    openLine(0);
    setSteps({{0, 0}, {0, 1}, {0, 2}, {0, 3}});
    toggleRunning();
    takeHits();
    toggleEditMode();
    EXPECT_EQ(soundEngine().outputMuted.exchange(0), 1); // what follows must not even be triggered
    EXPECT_EQ(soundEngine().stopAllVoicesRequest.exchange(0), 1);
    onStepTick();
    onStepTick();
    EXPECT_EQ(sequencer().currentStep, 2u);
    toggleRunning();
    toggleRunning();
    EXPECT_EQ(takeHits(), Hits{});

    soundEngine().outputMuted = 1;
    toggleEditMode();
    EXPECT_EQ(soundEngine().outputMuted, 0);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest, 0) << "nothing to end";
    onStepTick();
    EXPECT_EQ(takeHits(), (Hits{{0, 1.0f}, {1, 1.0f}}));
}

TEST_F(SequencerTest, NewLengthMovesThePositionOnlyWhenItLiesOutside) {
    const auto expectStep = [](std::uint32_t stepAfter, std::uint32_t step, std::uint32_t from,
                               std::uint32_t to, std::ptrdiff_t repainted) {
        SCOPED_TRACE(testing::Message() << "at " << step << ", " << from << " to " << to);
        sequencer().currentStep = step;
        sequencer().sequenceLength = from;
        sequencer().beatLampShown = beatLampLit();
        resetFakeScreen();
        setSequenceLength(to);
        EXPECT_EQ(sequencer().currentStep, stepAfter);
        EXPECT_EQ(staleControls(), Names{});
        const Names redraws = takeRedraws();
        EXPECT_EQ(std::ranges::count_if(
                      redraws, [](const auto& each) { return each.starts_with("bottone"); }),
                  repainted);
        setSequenceLength(to); // the same again
        EXPECT_EQ(takeRedraws(), Names{});
    };
    setSteps({{0, 0}, {0, 8}, {0, 9}, {0, 12}});
    expectStep(0, 12, 16, 12, 0);
    sequencer().running = true;
    expectStep(0, 9, 16, 9, 2);
    expectStep(8, 8, 16, 9, 0);
    expectStep(0, 40, 60, 16, 1); // a card may carry any length
}

} // namespace
} // namespace percussomatic
