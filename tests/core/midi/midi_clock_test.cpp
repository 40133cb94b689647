#include "midi/midi_clock.h"
#include "sequencer/transport.h"

#include "midi/midi_message.h"
#include "midi/midi_state.h"
#include "sequencer/sequencer.h"
#include "support/fake_midi.h"
#include "support/fake_screen.h"
#include "support/panel_actions.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace percussomatic {
namespace {

constexpr std::uint32_t kPulse = 0xF8, kStart = 0xFA, kContinue = 0xFB, kStop = 0xFC;
constexpr std::int64_t kPulseNs = 20'833'333; // at 120 BPM
const std::wstring kWaiting = L"SYNC: MIDI CLOCK Waiting for clock...";

// Starts one tiny recording per step: the number of voices is the number of steps that sounded.
class MidiClock : public testing::Test {
protected:
    MidiClock() {
        for (int step = 0; step < kStepCount; ++step) {
            sequencer().pattern.set(0, step, true);
        }
        sliderOffset("slider_001") = 650;
        toggleBit("sw_001") = 1;
        resetFakeScreen();
    }

    void pulses(int count, std::int64_t intervalNs = kPulseNs) {
        for (int pulse = 0; pulse < count; ++pulse) {
            passTimeTo(nowNs_ += intervalNs);
            handleMidiMessage(kPulse);
            EXPECT_EQ(staleControls(), Names{});
        }
    }

    FreshMidi instrument_;
    std::int64_t nowNs_ = 0;
};

TEST_F(MidiClock, TempoComesWithTheSecondPulseAndIsSmoothed) {
    const auto shownAfter = [&](int count, std::int64_t intervalNs) {
        pulses(count, intervalNs);
        return fakeSystem().syncStatus;
    };
    const std::wstring bpm = L"SYNC: MIDI CLOCK BPM: ";
    followMidiClock();
    EXPECT_EQ(shownAfter(1, kPulseNs), kWaiting);
    EXPECT_EQ(shownAfter(1, kPulseNs), bpm + L"120.00");
    EXPECT_EQ(shownAfter(1, 2'000'000'000), bpm + L"105.75") << "as 1.25 BPM";
    EXPECT_EQ(shownAfter(1, kPulseNs), bpm + L"107.46");
    EXPECT_EQ(shownAfter(100, kPulseNs), bpm + L"120.00");
    EXPECT_EQ(shownAfter(1, 100'001), bpm + L"3105.57") << "just not too near";
    followMidiClock(); // begun anew
    EXPECT_EQ(shownAfter(1, 10 * kPulseNs), kWaiting);
    EXPECT_EQ(shownAfter(1, 10 * kPulseNs), bpm + L"12.00");
    EXPECT_EQ(sequencer().bpm, 120.0) << "the instrument's own tempo";
}

TEST_F(MidiClock, PulseTooNearCountsButIsNotMeasured) {
    followMidiClock();
    handleMidiMessage(kStart);
    pulses(4);
    const double bpm = sequencer().midiBpm;
    pulses(1, 100'000);
    pulses(1, 0);
    EXPECT_EQ(sequencer().midiBpm, bpm);
    EXPECT_EQ(sequencer().currentStep, 1u) << "six in all";
    pulses(1);
    EXPECT_NEAR(sequencer().midiBpm, bpm, 1e-9) << "measured from the near one";
}

TEST_F(MidiClock, SixPulsesAreAStepAndNinetySixARound) {
    followMidiClock();
    sequencer().currentStep = 7;
    handleMidiMessage(kStart);
    for (int pulse = 0; pulse <= 2 * 96; ++pulse) {
        EXPECT_EQ(sequencer().currentStep, static_cast<std::uint32_t>(pulse / 6 % 16));
        EXPECT_EQ(takeVoices(), pulse % 6 == 0 ? 1 : 0) << pulse;
        pulses(1);
    }
    EXPECT_EQ(takePostedTicks(), std::vector<PostedTick>{}) << "the step clock stands still";
}

TEST_F(MidiClock, TransportFollowsOnlyWhileTheMidiClockLeads) {
    handleMidiMessage(kStart);
    pulses(12);
    EXPECT_FALSE(sequencer().running) << "the step clock leads";
    followMidiClock();
    const auto expectAfter = [&](std::uint32_t message, int count, bool running,
                                 std::uint32_t currentStep, int voices) {
        SCOPED_TRACE(testing::Message() << std::hex << message << ", then " << count);
        handleMidiMessage(message);
        pulses(count);
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(sequencer().running, running);
        EXPECT_EQ(sequencer().currentStep, currentStep);
        EXPECT_EQ(takeVoices(), voices);
    };
    expectAfter(kStop, 11, false, 0, 0);   // stopped, pulses do not count
    expectAfter(kContinue, 5, true, 0, 0); // from a stand
    expectAfter(kPulse, 0, true, 1, 1);    // it began to count there
    expectAfter(kStart, 13, true, 2, 3);   // from further on
    expectAfter(kStop, 7, false, 2, 0);    // the step begun is dropped
    expectAfter(kContinue, 6, true, 3, 1); // resumes after the step
    expectAfter(kPulse, 2, true, 3, 0);    // continue while running begins it anew
    expectAfter(kContinue, 5, true, 3, 0);
    expectAfter(kPulse, 0, true, 4, 1);
    expectAfter(kStart, 0, true, 0, 1); // once more
    expectAfter(kStop, 0, false, 0, 0);
    pulses(5);
    toggleRunning(); // by hand
    takeVoices();
    pulses(5);
    EXPECT_EQ(sequencer().currentStep, 0u) << "pulses while stopped did not count";
    pulses(1);
    EXPECT_EQ(takeVoices(), 1);
}

TEST_F(MidiClock, LeaderChangesWhileTheRhythmRuns) {
    toggleRunning();
    passTimeTo(nowNs_ += 250 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 2u);
    takeVoices();
    pulses(9); // 187.5 ms: measured, but the step clock leads
    EXPECT_EQ(fakeSystem().syncStatus, L"SYNC: INTERNAL BPM: 120.00");
    EXPECT_NEAR(sequencer().midiBpm, 120.0, 1e-3);
    EXPECT_EQ(takePostedTicks().size(), 1u);

    followMidiClock();
    EXPECT_EQ(fakeSystem().syncStatus, kWaiting);
    pulses(12, kPulseNs / 2);
    EXPECT_EQ(fakeSystem().syncStatus, L"SYNC: MIDI CLOCK BPM: 240.00");
    EXPECT_EQ(takeVoices(), 2);
    EXPECT_EQ(takePostedTicks().size(), 0u);

    pulses(5); // of a step that is never finished
    followInternalClock();
    EXPECT_EQ(sequencer().midiBpm, 0.0);
    passTimeTo(nowNs_ += 1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 8u) << "at its own tempo again";
    followMidiClock();
    pulses(5);
    EXPECT_EQ(takeVoices(), 0);
    pulses(1);
    EXPECT_EQ(takeVoices(), 1);
}

} // namespace
} // namespace percussomatic
