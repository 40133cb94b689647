// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"
#include "pattern/instruments.h"
#include "pattern/pattern.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace percussomatic {

// The rhythm: its pattern, the current step, and what a step plays. All of it belongs to the GUI
// thread; the step clock only asks for the next step by a posted message.
struct Sequencer {
    Pattern pattern;
    std::uint32_t currentStep = 0;
    std::uint32_t sequenceLength = kFullLength; // steps, never 0
    bool running = false;
    bool editMode = false; // steps go on, nothing sounds, every set step is lit
    double bpm = 120.0;    // of the internal clock, kMinBpm..kMaxBpm
    bool externalSync = false;
    bool midiClockSeen = false;
    double midiBpm = 0.0; // measured from MIDI clock

    // By instrument: its index in the sample bank, -1 if its recording could not be loaded.
    std::array<std::int32_t, kInstrumentCount> sampleIndices = unloaded();

    // Controls that show lit while the mouse button is down.
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

// Everything as at start-up except the sample indices, which stay.
void resetSequencer() noexcept;

// Loads the twelve embedded recordings into the sound engine and keeps their indices.
void loadLineSamples();

// The line's gain 0..1 from its slider; 0 for a line that does not exist.
float lineVolume(int line) noexcept;

bool isSwitchOn(std::string_view name) noexcept;

// Starts the voices of one step: of every line whose step is set and whose volume is above 0,
// instrument A, then B. No-op in edit mode and from step 16 on.
void triggerStep(std::uint32_t step);

} // namespace percussomatic
