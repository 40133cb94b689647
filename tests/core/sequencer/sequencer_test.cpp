// SPDX-License-Identifier: MIT
#include "sequencer/sequencer.h"

#include "sequencer/pattern_edits.h"
#include "sequencer/step_clock.h"
#include "support/panel_actions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <thread>
#include <utility>
#include <vector>

namespace percussomatic {
namespace {

using Hits = std::vector<std::pair<int, float>>; // sample index in kInstruments, gain

struct SequencerTest : testing::Test, FreshInstrument {
    static void openLine(int line, std::uint32_t offset = kSliderTravel) {
        const control::Line& names = control::line(line);
        toggleBit(names.switches[0]) = toggleBit(names.switches[1]) = 1;
        sliderOffset(names.slider) = offset;
    }

    // Triggered since the last call, in order. Resets the voices.
    static Hits takeHits() {
        Hits hits;
        const auto& indices = sequencer().sampleIndices;
        for (const Voice& voice : soundEngine().voices) {
            if (voice.active) {
                const auto* const found = std::ranges::find(indices, voice.sampleIndex);
                hits.emplace_back(static_cast<int>(found - indices.begin()), voice.gain);
            }
        }
        soundEngine().deactivateAllVoices();
        return hits;
    }
};

TEST_F(SequencerTest, StepTriggersAudibleLinesInOrderAThenB) {
    for (int line = 0; line < kLineCount; ++line) {
        openLine(line, 650 - 130 * static_cast<std::uint32_t>(line)); // the last one at 0
    }
    toggleBit("sw_026") = 0; // B of line 2
    for (const auto& [line, step] : {std::pair(0, 2), {1, 2}, {4, 2}, {5, 2}, {3, 15}, {1, 0}}) {
        sequencer().pattern.set(line, step, true);
    }
    sequencer().sampleIndices[8] = -1; // could not be loaded
    const std::pair<std::uint32_t, Hits> cases[] = {
        {2, {{0, 1.0f}, {1, 1.0f}, {2, 0.8f}, {9, 130.0f / 650.0f}}},
        {15, {{6, 0.4f}, {7, 0.4f}}},
        {16, {}}};
    for (const auto& [step, hits] : cases) {
        triggerStep(step, 0);
        EXPECT_EQ(takeHits(), hits) << "step " << step;
    }
}

// For the thread sanitizer: at this tempo the clock's thread posts without waiting.
TEST_F(SequencerTest, StepClockIsControlledWhileItPosts) {
    constexpr double kNoInterval = 1e12;
    void (*const calls[])() = {[] { runClock(kNoInterval, 0); }, [] { setClockTempo(kNoInterval); },
                               [] { setClockWindow(nullptr); },  [] { droppedStepCount(); },
                               [] { takeDeadline(); },           clockStop};
    for (const auto call : calls) {
        takePostedTicks();
        runClock(kNoInterval, 0);
        while (takePostedTicks().empty()) {
        }
        for (int count = 0; count < 500; ++count) {
            call();
            std::this_thread::yield(); // or all calls may be over before the thread runs again
        }
        clockShutdown();
        EXPECT_EQ(clockThreadCount(), 0);
    }
}

TEST_F(SequencerTest, StartPlaysStepZeroAndTicksWrapAtTheLength) {
    openLine(0);
    sequencer().pattern.set(0, 0, true);
    sequencer().currentStep = 3;
    for (const std::uint32_t length : {5u, 6u, 1u}) {
        sequencer().sequenceLength = length;
        toggleRunning();
        for (std::uint32_t played = 0; played < 2 * length + 1; ++played) {
            const bool first = played % length == 0;
            EXPECT_EQ(sequencer().currentStep, played % length) << length;
            EXPECT_EQ(beatLampLit(), first);
            EXPECT_EQ(takeVoices(), first ? 2 : 0);
            takeRedraws();
            onClockTick();
            EXPECT_EQ(std::ranges::count(takeRedraws(), "flush"), 1) << "not painted at once";
        }
        takeVoices();
        toggleRunning();
    }
}

TEST_F(SequencerTest, AStepThatIsAlreadyQueuedIsIgnoredAfterStop) {
    openLine(0);
    sequencer().pattern.set(0, 1, true);
    toggleRunning();
    toggleRunning();
    onClockTick();
    EXPECT_EQ(sequencer().currentStep, 0u);
    EXPECT_EQ(takeVoices(), 0);
    EXPECT_FALSE(beatLampLit());
}

TEST_F(SequencerTest, EditModeAdvancesSilently) {
    openLine(0);
    sequencer().pattern.steps.fill(1);
    toggleRunning();
    takeVoices();
    toggleEditMode();
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest.exchange(0), 1);
    onClockTick();
    EXPECT_EQ(sequencer().currentStep, 1u);
    toggleRunning();
    toggleRunning();
    EXPECT_EQ(takeVoices(), 0);
    toggleEditMode();
    EXPECT_EQ(soundEngine().outputMuted, 0);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest, 0) << "no voice to stop";
    onClockTick();
    EXPECT_EQ(takeVoices(), 2);
}

TEST_F(SequencerTest, NewLengthResetsOnlyAStepBeyondIt) {
    sequencer().pattern.steps.fill(1);
    const std::array<std::uint32_t, 4> cases[] = {// 60: from a card
                                                  {12, 16, 12, 0},
                                                  {9, 16, 9, 0},
                                                  {8, 16, 9, 8},
                                                  {40, 60, 16, 0}};
    for (const bool running : {false, true}) {
        sequencer().running = running;
        for (const auto& [step, from, to, stepAfter] : cases) {
            sequencer().currentStep = step;
            sequencer().sequenceLength = from;
            sequencer().beatLampShown = beatLampLit();
            resetFakeScreen();
            setSequenceLength(to);
            EXPECT_EQ(sequencer().currentStep, stepAfter) << step << " of " << from << " to " << to;
            EXPECT_EQ(staleControls(), Names{});
        }
    }
}

} // namespace
} // namespace percussomatic
