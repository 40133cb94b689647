#include "sequencer/sequencer.h"

#include "audio/sound_engine.h"
#include "support/recorded_screen.h"
#include "support/recorded_system.h"
#include "ui/assets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace percussomatic {
namespace {

using Names = std::vector<std::string>;
using Hit = std::pair<int, float>; // instrument 0..11 (2 x line, + 1 for B), gain
using Hits = std::vector<Hit>;

// By sample index.
constexpr struct {
    std::string_view switchName, slider, recording;
} kInstruments[] = {
    {"sw_001", "slider_001", "rolling_snare.wav"}, {"sw_028", "slider_001", "cymbal_1.wav"},
    {"sw_002", "slider_002", "cymbal_2.wav"},      {"sw_026", "slider_002", "snare.wav"},
    {"sw_003", "slider_003", "timbal_2.wav"},      {"sw_024", "slider_003", "charleston.wav"},
    {"sw_004", "slider_004", "triangle.wav"},      {"sw_022", "slider_004", "clave.wav"},
    {"sw_005", "slider_005", "block_2.wav"},       {"sw_020", "slider_005", "timbal_1.wav"},
    {"sw_006", "slider_006", "block_1.wav"},       {"sw_017", "slider_006", "bass_drum.wav"},
};

class SequencerTest : public testing::Test {
protected:
    // The line can be heard: both instruments on, the slider at this offset.
    static void openLine(int line, std::uint32_t offset = kSliderTravel) {
        const RhythmLine& row = kRhythmLines[static_cast<std::size_t>(line)];
        const auto at = [](std::string_view name) {
            return static_cast<std::size_t>(findControl(name));
        };
        controlState().toggleBits[at(row.switchA)] = 1;
        controlState().toggleBits[at(row.switchB)] = 1;
        controlState().sliderOffset[at(row.slider)] = offset;
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

TEST_F(SequencerTest, SwitchesAndSlidersBelongToTheirInstrument) {
    for (int line = 0; line < kLineCount; ++line) {
        sequencer().pattern.set(line, 7, true);
    }
    for (int instrument = 0; instrument < 12; ++instrument) {
        const auto& [switchName, slider, recording] = kInstruments[instrument];
        resetControlState();
        controlState().toggleBits[static_cast<std::size_t>(findControl(switchName))] = 1;
        controlState().sliderOffset[static_cast<std::size_t>(findControl(slider))] = 325;
        triggerStep(7);
        EXPECT_EQ(takeHits(), (Hits{{instrument, 0.5f}})) << recording;
    }
}

// A few frames in the middle of each file are enough to tell one from the other.
TEST_F(SequencerTest, RecordingsAreLoadedInTheOrderOfTheInstruments) {
    const auto before = static_cast<std::int32_t>(soundEngine().samples.size());
    loadLineSamples();
    for (std::int32_t instrument = 0; instrument < 12; ++instrument) {
        const auto at = static_cast<std::size_t>(instrument);
        SCOPED_TRACE(kInstruments[at].recording);
        ASSERT_EQ(sequencer().sampleIndices[at], before + instrument);
        const Sample& sample = soundEngine().samples[static_cast<std::size_t>(before) + at];
        const std::span<const std::byte> file = findAsset(kInstruments[at].recording).span();
        constexpr std::size_t kHeaderBytes = 44, kFrameBytes = 6;
        ASSERT_EQ(sample.left.size(), (file.size() - kHeaderBytes) / kFrameBytes);
        for (std::size_t frame = 2000; frame < 2100; ++frame) {
            std::uint32_t bits = 0; // the 24 of the left channel, in the upper three bytes
            for (std::size_t byte = 0; byte < 3; ++byte) {
                const std::byte each = file[kHeaderBytes + kFrameBytes * frame + byte];
                bits |= std::to_integer<std::uint32_t>(each) << (8 + 8 * byte);
            }
            const auto value = static_cast<float>(static_cast<std::int32_t>(bits) / 2147483648.0);
            ASSERT_EQ(sample.left[frame], value) << frame;
        }
    }
}

TEST_F(SequencerTest, StepPlaysItsLinesInOrderABeforeBAndLeavesSilentOnesOut) {
    for (int line = 0; line < kLineCount; ++line) {
        openLine(line, 650 - 130 * static_cast<std::uint32_t>(line)); // the last at 0
    }
    controlState().toggleBits[static_cast<std::size_t>(findControl("sw_026"))] = 0;
    setSteps({{0, 2}, {1, 2}, {4, 2}, {5, 2}, {3, 15}, {1, 0}});
    sequencer().sampleIndices[8] = -1; // could not be loaded
    const struct {
        std::uint32_t step;
        Hits hits;
    } cases[] = {
        {2, {{0, 1.0f}, {1, 1.0f}, {2, 0.8f}, {9, 130.0f / 650.0f}}},
        {15, {{6, 0.4f}, {7, 0.4f}}},
        {3, {}},
        {16, {}},
        {0xFFFFFFFF, {}},
    };
    for (const auto& [step, hits] : cases) {
        triggerStep(step);
        EXPECT_EQ(takeHits(), hits) << "step " << step;
    }
    EXPECT_EQ(lineVolume(-1), 0.0f);
    EXPECT_EQ(lineVolume(kLineCount), 0.0f);
    controlState().toggleBits[static_cast<std::size_t>(findControl("slider_001"))] = 1;
    EXPECT_FALSE(isSwitchOn("slider_001")) << "no switch";
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

TEST_F(SequencerTest, EditedStepIsHeardWhenItIsReachedAgain) {
    openLine(2);
    sequencer().sequenceLength = 5;
    toggleRunning();
    toggleStep(2, 0);
    EXPECT_EQ(takeHits(), Hits{});
    for (int tick = 0; tick < 5; ++tick) {
        EXPECT_EQ(takeHits(), Hits{});
        onStepTick();
    }
    EXPECT_EQ(takeHits(), (Hits{{4, 1.0f}, {5, 1.0f}}));
}

TEST_F(SequencerTest, EditModeIsSilentButGoesOn) {
    openLine(0);
    setSteps({{0, 0}, {0, 1}, {0, 2}, {0, 3}});
    toggleRunning();
    takeHits();
    toggleEditMode();
    EXPECT_EQ(soundEngine().outputMuted, 1);
    EXPECT_EQ(soundEngine().stopAllVoicesRequest.exchange(0), 1);
    soundEngine().outputMuted = 0; // what follows must not even be triggered
    onStepTick();
    onStepTick();
    EXPECT_EQ(sequencer().currentStep, 2u);
    EXPECT_TRUE(beatLampLit()) << "all along";
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
    const struct {
        bool running, editMode;
        std::uint32_t step, from, to;
        std::uint32_t stepAfter;
        Names steps; // repainted, of a column of one step on every position
    } cases[] = {
        {true, false, 9, 16, 9, 0, {"bottone_010 later", "bottone_001 later"}},
        {true, false, 15, 16, 5, 0, {"bottone_016 later", "bottone_001 later"}},
        {true, false, 8, 16, 9, 8, {}},
        {true, false, 4, 5, 16, 4, {}},
        {true, true, 12, 16, 12, 0, {}},
        {false, false, 12, 16, 12, 0, {}},
        {false, false, 3, 16, 12, 3, {}},
        {true, false, 40, 60, 16, 0, {"bottone_001 later"}}, // a card may carry any length
    };
    for (int step = 0; step < kStepCount; ++step) {
        sequencer().pattern.set(0, step, true);
    }
    for (const auto& [running, editMode, step, from, to, stepAfter, steps] : cases) {
        SCOPED_TRACE(testing::Message() << "at " << step << ", " << from << " to " << to);
        sequencer().running = running;
        sequencer().editMode = editMode;
        sequencer().currentStep = step;
        sequencer().sequenceLength = from;
        sequencer().beatLampShown = beatLampLit();
        resetRecordedScreen();
        setSequenceLength(to);
        EXPECT_EQ(sequencer().sequenceLength, to);
        EXPECT_EQ(sequencer().currentStep, stepAfter);

        Names redraws = takeRedraws();
        const Names switches{"sw_009 later", "sw_010 later", "sw_011 later", "sw_012 later",
                             "sw_013 later", "sw_015 later", "sw_016 later"};
        ASSERT_GE(redraws.size(), switches.size());
        const auto after = redraws.begin() + static_cast<std::ptrdiff_t>(switches.size());
        EXPECT_EQ(Names(redraws.begin(), after), switches);
        redraws.erase(redraws.begin(), after);
        std::erase_if(redraws,
                      [](const std::string& each) { return !each.starts_with("bottone"); });
        EXPECT_EQ(redraws, steps);
        EXPECT_EQ(staleControls(), Names{});

        setSequenceLength(to); // the same again
        EXPECT_EQ(takeRedraws(), Names{});
    }
}

TEST_F(SequencerTest, OnlyWhatChangesIsRepaintedAndAtOnce) {
    setSteps({{0, 3}, {5, 3}, {2, 0}, {3, 1}});
    sequencer().currentStep = 3;
    const struct {
        const char* what;
        void (*act)();
        Names redraws;
    } cases[] = {
        {"start: the old and the new column",
         toggleRunning,
         {"sw_007 later", "bin_001 later", "bottone_004 later", "bottone_084 later",
          "bottone_033 later", "flush"}},
        {"tick", onStepTick, {"bin_001 later", "bottone_033 later", "bottone_050 later", "flush"}},
        {"tick to an empty column", onStepTick, {"bottone_050 later", "flush"}},
        {"edit mode on",
         toggleEditMode,
         {"sw_008 later", "bin_001 later", "bottone_004 later", "bottone_084 later",
          "bottone_033 later", "bottone_050 later", "flush"}},
        {"tick in edit mode", onStepTick, {"flush"}},
        {"stop in edit mode", toggleRunning, {"sw_007 later", "bin_001 later", "flush"}},
        {"tick while stopped", onStepTick, {}},
        {"clear all",
         clearAll,
         {"sw_018 later", "bottone_004 later", "bottone_084 later", "bottone_033 later",
          "bottone_050 later", "flush"}},
    };
    for (const auto& [what, act, expected] : cases) {
        SCOPED_TRACE(what);
        act();
        const Names redraws = takeRedraws();
        EXPECT_TRUE(redraws.empty() || redraws.back() == "flush");
        EXPECT_EQ(std::multiset(redraws.begin(), redraws.end()),
                  std::multiset(expected.begin(), expected.end()));
        EXPECT_EQ(staleControls(), Names{});
    }
}

} // namespace
} // namespace percussomatic
