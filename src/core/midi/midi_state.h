// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace percussomatic {

inline constexpr int kMidiChannels = 16, kMidiControllers = 128;

// A Control Change bound to a control of the panel. Learning keeps controls unique, and pairs of
// channel and controller as well; an imported list may hold duplicates.
struct MidiMapping {
    std::string controlId;
    int channel = 0;    // 0..15, shown to the player as 1..16
    int controller = 0; // 0..127

    bool operator==(const MidiMapping&) const = default;
};

inline constexpr double kNoMidiTarget = -1.0;

// State of the MIDI input: the profile of the connected port, the learn in progress, the targets of
// gliding controls, and the clock. GUI thread; the driver's callback only posts messages.
struct MidiState {
    std::vector<MidiMapping> mappings; // in the order learned or loaded
    std::wstring profileDeviceName;    // empty without a port; then no profile is saved

    bool learnArmed = false;          // the next click on the panel selects a control
    bool learnWaitingForMidi = false; // the next Control Change is bound to learnTargetId
    std::string learnTargetId;
    std::wstring learnStatusText = L"Learn status: idle";

    // By channel and controller: the last value received of mapped Control Changes.
    std::array<std::array<std::uint8_t, kMidiControllers>, kMidiChannels> ccLastValue{};

    // By control: 0..1, or kNoMidiTarget. The glide timer runs while any target is set.
    std::array<double, kControlCount> midiTargetValue = noTargets();

    std::int64_t lastClockTime = 0;   // of the last pulse, monotonic ns; 0 before the first
    std::uint32_t clockTickCount = 0; // pulses since the last step, 0..5

    std::uint8_t& lastValue(int channel, int controller) {
        return ccLastValue[static_cast<std::size_t>(channel)][static_cast<std::size_t>(controller)];
    }
    double& target(int control) { return midiTargetValue[static_cast<std::size_t>(control)]; }

private:
    static constexpr std::array<double, kControlCount> noTargets() {
        std::array<double, kControlCount> targets{};
        targets.fill(kNoMidiTarget);
        return targets;
    }
};

MidiState& midiState() noexcept;

// Restores the state at start-up. Does not stop the glide timer.
void resetMidiState();

// Sets the status line of the MIDI device window, whether that is open or not.
void setLearnStatus(std::wstring text);

} // namespace percussomatic
