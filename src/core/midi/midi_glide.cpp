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

// Where a control at `current` stands after a tick, 0..1; a target that is reached is forgotten.
double nextValue(double current, double& target) {
    constexpr double kShare = 0.35; // of the way that is left
    constexpr double kLanding = 0.002;
    const double distance = target - current;
    const double next = std::abs(distance) < kLanding ? std::exchange(target, kNoMidiTarget)
                                                      : current + kShare * distance;
    return std::clamp(next, 0.0, 1.0);
}

// Takes the rotary out of the hand that drags it.
void glideRotary(int index, RotaryState& rotary, double& target) {
    const double value = nextValue(rotary.value, target);
    rotary = {.value = value, .dragStartValue = value};
    applyRotary(index);
    redrawControl(index, Repaint::now);
}

// Offsets are whole units: a target 1.3 to 1.43 units away is neither near enough nor far enough to
// move the slider, and stays pending until the controller moves on.
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
    midiState().midiTargetValue[static_cast<std::size_t>(index)] = target;
    if (!timerRuns) {
        startTimer(WindowTimer::midiGlide, kGlidePeriodMs);
    }
}

void endGlides() {
    midiState().midiTargetValue.fill(kNoMidiTarget);
    stopTimer(WindowTimer::midiGlide);
}

void midiSmoothingTick() {
    for (int index = 0; index < kControlCount; ++index) {
        double& target = midiState().midiTargetValue[static_cast<std::size_t>(index)];
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
