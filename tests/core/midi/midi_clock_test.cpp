// SPDX-License-Identifier: MIT
#include "midi/midi_clock.h"

#include "midi/midi_message.h"
#include "midi/midi_state.h"
#include "support/panel_actions.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

namespace percussomatic {
namespace {

constexpr std::uint32_t kPulse = 0xF8, kStart = 0xFA, kContinue = 0xFB, kStop = 0xFC;
constexpr std::int64_t kPulseNs = 20'833'333; // at 120 BPM
const std::wstring kWaiting = L"SYNC: MIDI CLOCK Waiting for clock...";

// Every step triggers one voice.
struct MidiClock : testing::Test, FreshInstrument {
    MidiClock() {
        sequencer().pattern.steps.fill(1);
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

    std::int64_t nowNs_ = 0;
};

TEST_F(MidiClock, TempoIsMeasuredFromTheSecondPulseAndSmoothed) {
    const auto shownAfter = [&](int count, std::int64_t intervalNs) {
        pulses(count, intervalNs);
        return fakeSystem().syncStatus;
    };
    const std::wstring bpm = L"SYNC: MIDI CLOCK BPM: ";
    followMidiClock();
    EXPECT_EQ(shownAfter(1, kPulseNs), kWaiting);
    EXPECT_EQ(shownAfter(1, kPulseNs), bpm + L"120.00");
    EXPECT_EQ(shownAfter(1, 2'000'000'000), bpm + L"105.75") << "a pause of 1.25 BPM";
    EXPECT_EQ(shownAfter(100, kPulseNs), bpm + L"120.00");
    EXPECT_EQ(shownAfter(1, 100'000), bpm + L"120.00") << "too close";
    EXPECT_EQ(shownAfter(1, 100'001), bpm + L"3105.57");
    followMidiClock();
    EXPECT_EQ(shownAfter(1, 10 * kPulseNs), kWaiting);
    EXPECT_EQ(shownAfter(1, 10 * kPulseNs), bpm + L"12.00");
    EXPECT_EQ(sequencer().bpm, 120.0) << "tempo of the internal clock";
}

TEST_F(MidiClock, EverySixthPulsePlaysAStep) {
    followMidiClock();
    sequencer().currentStep = 7;
    handleMidiMessage(kStart);
    for (int pulse = 0; pulse <= 2 * 96; ++pulse) {
        EXPECT_EQ(sequencer().currentStep, static_cast<std::uint32_t>(pulse / 6 % 16));
        EXPECT_EQ(takeVoices(), pulse % 6 == 0 ? 1 : 0) << pulse;
        pulses(1, pulse % 2 == 0 ? kPulseNs : 0); // a pulse too close to measure counts as well
    }
    EXPECT_EQ(takePostedTicks(), std::vector<PostedTick>{}) << "the internal clock is stopped";
}

TEST_F(MidiClock, StartContinueAndStopDriveTheTransport) {
    handleMidiMessage(kStart);
    EXPECT_FALSE(sequencer().running) << "the internal clock is selected";
    followMidiClock();
    // Message, pulses after it; then running, current step and voices.
    const std::tuple<std::uint32_t, int, bool, std::uint32_t, int> cases[] = {
        {kStop, 11, false, 0, 0}, {kContinue, 5, true, 0, 0}, {kPulse, 0, true, 1, 1},
        {kStart, 13, true, 2, 3}, {kStop, 7, false, 2, 0},    {kContinue, 6, true, 3, 1},
        {kPulse, 2, true, 3, 0},  {kContinue, 5, true, 3, 0}, {kPulse, 0, true, 4, 1}};
    for (const auto& [message, count, running, step, voices] : cases) {
        SCOPED_TRACE(testing::Message() << std::hex << message << ", then " << count);
        handleMidiMessage(message);
        pulses(count);
        EXPECT_EQ(staleControls(), Names{});
        EXPECT_EQ(sequencer().running, running);
        EXPECT_EQ(fakeSystem().awake, running);
        EXPECT_EQ(sequencer().currentStep, step);
        EXPECT_EQ(takeVoices(), voices);
    }
}

TEST_F(MidiClock, StartSwitchDoesNotStartTheInternalClock) {
    followMidiClock();
    toggleRunning();
    takeVoices();
    pulses(5);
    EXPECT_EQ(takeVoices(), 0);
    pulses(6);
    EXPECT_EQ(takeVoices(), 1);
    EXPECT_EQ(takePostedTicks(), std::vector<PostedTick>{});
}

TEST_F(MidiClock, ClockSourceChangesWhileTheRhythmRuns) {
    toggleRunning();
    takeVoices();
    pulses(18); // 375 ms
    EXPECT_EQ(fakeSystem().syncStatus, L"SYNC: INTERNAL BPM: 120.00");
    EXPECT_NEAR(sequencer().midiBpm, 120.0, 1e-3);
    EXPECT_EQ(takePostedTicks().size(), 2u);
    EXPECT_EQ(takeVoices(), 0);

    followMidiClock();
    onClockTick(); // was posted before
    EXPECT_EQ(takeVoices(), 0);
    EXPECT_EQ(fakeSystem().syncStatus, kWaiting);
    pulses(17, kPulseNs / 2); // 5 of them after the last step
    EXPECT_EQ(fakeSystem().syncStatus, L"SYNC: MIDI CLOCK BPM: 240.00");
    EXPECT_EQ(takeVoices(), 2);
    EXPECT_EQ(takePostedTicks().size(), 0u);

    followInternalClock();
    EXPECT_EQ(sequencer().midiBpm, 0.0);
    passTimeTo(nowNs_ += 1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 8u);
    followMidiClock();
    pulses(5);
    EXPECT_EQ(takeVoices(), 0);
    pulses(1);
    EXPECT_EQ(takeVoices(), 1);
}

} // namespace
} // namespace percussomatic
