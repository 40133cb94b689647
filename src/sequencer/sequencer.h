#pragma once

#include "ui/control_layout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace percussomatic {

// The rhythm: six lines of sixteen steps, where it stands, and what a step plays. All of it belongs
// to the GUI thread; the step clock only asks for the next step by a posted message.

struct Pattern {
    std::array<std::uint8_t, kLineCount * kStepCount> steps{}; // line by line, 0 = off

    bool isSet(int line, int step) const noexcept {
        return steps[static_cast<std::size_t>(line * kStepCount + step)] != 0;
    }
    void set(int line, int step, bool on) noexcept {
        steps[static_cast<std::size_t>(line * kStepCount + step)] = on ? 1 : 0;
    }
};

struct Sequencer {
    Pattern pattern;
    std::uint32_t currentStep = 0;
    std::uint32_t sequenceLength = 16; // never 0
    bool running = false;
    bool editMode = false; // steps go on, nothing sounds, every set step is lit
    double bpm = 120.0;    // of internal play, 40..240
    bool externalSync = false;
    bool midiClockSeen = false;
    double midiBpm = 0.0; // measured from MIDI clock

    // Sample index of instrument A and B of each line, -1 where none could be loaded.
    std::array<std::int32_t, 2 * kLineCount> sampleIndices = filledWith(-1);

    // Controls that show lit while the mouse button is down.
    int heldStepButton = kNoControl;
    int heldLineClear = kNoControl;
    bool clearAllHeld = false;

    bool beatLampShown = false; // as last painted

private:
    static constexpr std::array<std::int32_t, 2 * kLineCount> filledWith(std::int32_t value) {
        std::array<std::int32_t, 2 * kLineCount> all{};
        all.fill(value);
        return all;
    }
};

// One line of the panel: its volume slider, and the switch and recording of each of its
// instruments.
struct RhythmLine {
    std::string_view slider;
    std::string_view switchA, sampleA;
    std::string_view switchB, sampleB;
};

// The last B switch is sw_017: sw_018 clears the pattern.
inline constexpr std::array<RhythmLine, kLineCount> kRhythmLines{{
    {"slider_001", "sw_001", "rolling_snare.wav", "sw_028", "cymbal_1.wav"},
    {"slider_002", "sw_002", "cymbal_2.wav", "sw_026", "snare.wav"},
    {"slider_003", "sw_003", "timbal_2.wav", "sw_024", "charleston.wav"},
    {"slider_004", "sw_004", "triangle.wav", "sw_022", "clave.wav"},
    {"slider_005", "sw_005", "block_2.wav", "sw_020", "timbal_1.wav"},
    {"slider_006", "sw_006", "block_1.wav", "sw_017", "bass_drum.wav"},
}};

Sequencer& sequencer() noexcept;

// Everything as at start-up but the sample indices, which stay.
void resetSequencer() noexcept;

// Loads the recordings of all lines into the sound engine, A before B, and keeps their indices.
void loadLineSamples();

// The line's gain 0..1 from its slider; 0 for a line that does not exist.
float lineVolume(int line) noexcept;

bool isSwitchOn(std::string_view name) noexcept;

// Starts the voices of one step: per line with its step set and its volume above 0, A then B.
// Nothing in edit mode or from step 16 on.
void triggerStep(std::uint32_t step);

// One step further: what the step clock's message and every sixth MIDI clock pulse call.
void onStepTick();

// What the panel's controls do.
void toggleRunning();
void toggleEditMode();
void setSequenceLength(std::uint32_t length); // at least 1
void toggleStep(int line, int step);
void clearAll();
void clearLine(int line, int clearSwitch); // clearSwitch: the control that is held

// What the lamps show now.
bool stepLampLit(int control) noexcept;
bool beatLampLit() noexcept;

// Repaints the beat lamp if it shows something else now.
void updateBeatLamp();

// Marks the set steps of a column for repainting; only those change when the column does.
void redrawStepColumn(std::uint32_t step);

} // namespace percussomatic
