// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"
#include "pattern/instruments.h"
#include "pattern/pattern.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace percussomatic {

// The rhythm: its pattern, the current step, and what a step plays. GUI thread only; the step clock
// requests the next step with a posted message.
struct Sequencer {
    Pattern pattern;
    std::uint32_t currentStep = 0;
    std::uint32_t sequenceLength = kFullLength; // steps, never 0
    bool running = false;
    bool editMode = false; // steps advance silently, every set step is lit
    double bpm = 120.0;    // internal clock, kMinBpm..kMaxBpm
    bool externalSync = false;
    bool midiClockSeen = false;
    double midiBpm = 0.0; // measured from MIDI clock; 0 if unknown

    // Sample bank index of each instrument; -1 if its recording could not be loaded.
    std::array<std::int32_t, kInstrumentCount> sampleIndices = unloaded();

    // Controls that are lit while the mouse button is held on them.
    int heldStepButton = kNoControl;
    int heldLineClear = kNoControl;
    bool clearAllHeld = false;

    bool beatLampShown = false; // as last painted

private:
    static constexpr std::array<std::int32_t, kInstrumentCount> unloaded() {
        std::array<std::int32_t, kInstrumentCount> all{};
        all.fill(-1);
        return all;
    }
};

Sequencer& sequencer() noexcept;

// Restores the state at start-up, except for the sample indices.
void resetSequencer() noexcept;

// Loads the twelve embedded recordings into the sound engine and stores their indices.
void loadLineSamples();

// Gain 0..1 from the line's slider; 0 if there is no such line.
float lineVolume(int line) noexcept;

bool isSwitchOn(std::string_view name) noexcept; // false if there is no such switch

// Triggers instrument A, then B, of every line that has this step set and a gain above 0, to sound
// at the frame that belongs to dueNs. No-op in edit mode and from step 16 on.
void triggerStep(std::uint32_t step, std::int64_t dueNs);

} // namespace percussomatic
