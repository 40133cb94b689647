// SPDX-License-Identifier: MIT
#include "midi/midi_glide.h"

#include "midi/midi_state.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/transport.h"
#include "window_timers.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace percussomatic {

namespace {

bool gliding() noexcept {
    const auto& targets = midiState().midiTargetValue;
    return std::any_of(targets.begin(), targets.end(), [](double target) { return target >= 0.0; });
}

// Value of a control after the next tick, 0..1. Clears a target that has been reached.
double nextValue(double current, double& target) {
    constexpr double kFraction = 0.35;      // of the remaining distance, per tick
    constexpr double kSnapDistance = 0.002; // closer than this, the target is reached
    const double distance = target - current;
    const double next = std::abs(distance) < kSnapDistance ? std::exchange(target, kNoMidiTarget)
                                                           : current + kFraction * distance;
    return std::clamp(next, 0.0, 1.0);
}

// Ends a drag of the rotary.
void glideRotary(int index, RotaryState& rotary, double& target) {
    const double value = nextValue(rotary.value, target);
    rotary = {.value = value, .dragStartValue = value};
    applyRotary(index);
    redrawControl(index, Repaint::now);
}

// Offsets are whole units. A target 1.3 to 1.43 units away is too far to snap to and too near for
// 35 % of the distance to round to a unit, so it stays pending until the next Control Change.
void glideSlider(int index, double& target) {
    std::uint32_t& offset = controlState().offset(index);
    const std::uint32_t old = offset;
    const double value = nextValue(static_cast<double>(old) / kSliderTravel, target);
    offset = static_cast<std::uint32_t>(value * kSliderTravel + 0.5);
    if (offset != old) {
        redrawSlider(index, old);
    }
}

} // namespace

void glideTo(int index, double target) {
    constexpr unsigned kGlidePeriodMs = 16;
    const bool timerRuns = gliding();
    midiState().target(index) = target;
    if (!timerRuns) {
        startTimer(WindowTimer::midiGlide, kGlidePeriodMs);
    }
}

void cancelGlides() {
    midiState().midiTargetValue.fill(kNoMidiTarget);
    stopTimer(WindowTimer::midiGlide);
}

void midiSmoothingTick() {
    for (int index = 0; index < kControlCount; ++index) {
        double& target = midiState().target(index);
        if (target < 0.0) {
            continue;
        }
        if (RotaryState* rotary = rotaryState(index); rotary != nullptr) {
            glideRotary(index, *rotary, target);
        } else {
            glideSlider(index, target);
        }
    }
    if (!gliding()) {
        stopTimer(WindowTimer::midiGlide);
    }
}

} // namespace percussomatic
