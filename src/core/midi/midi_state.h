// SPDX-License-Identifier: MIT
#pragma once

#include "panel/control_table.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace percussomatic {

inline constexpr int kMidiChannels = 16, kMidiControllers = 128;

// A Control Change that moves a control of the panel. A learned list holds every control at most
// once, and every channel and controller at most once.
struct MidiMapping {
    std::string controlId;
    int channel = 0;    // 0..15, told to the player as 1..16
    int controller = 0; // 0..127

    bool operator==(const MidiMapping&) const = default;
};

inline constexpr double kNoMidiTarget = -1.0;

// What MIDI remembers: the profile of the connected port, the learn in progress, where controls are
// gliding to, and the pulse of the clock. GUI thread; the driver's callback only posts.
struct MidiState {
    std::vector<MidiMapping> mappings; // in the order they were learned, or of the file
    std::wstring profileDeviceName;    // empty: no port, nothing is saved

    bool learnArmed = false;          // the next click on the panel chooses the control
    bool learnWaitingForMidi = false; // the next Control Change is bound to learnTargetId
    std::string learnTargetId;
    std::wstring learnStatusText = L"Learn status: idle";

    // By channel and controller: the last value of every mapped Control Change.
    std::array<std::array<std::uint8_t, kMidiControllers>, kMidiChannels> ccLastValue{};

    // By control: 0..1, or kNoMidiTarget. The glide's timer runs while any is set.
    std::array<double, kControlCount> midiTargetValue = noTargets();

    std::int64_t lastClockTime = 0;   // of the last pulse, ns of the monotonic counter; 0: none
    std::uint32_t clockTickCount = 0; // pulses since the last step, 0..5

private:
    static constexpr std::array<double, kControlCount> noTargets() {
        std::array<double, kControlCount> targets{};
        targets.fill(kNoMidiTarget);
        return targets;
    }
};

MidiState& midiState() noexcept;

// As at start-up; the glide's timer is the caller's.
void resetMidiState();

// Keeps the text for when the device window opens, and shows it if it is open.
void setLearnStatus(std::wstring text);

} // namespace percussomatic
