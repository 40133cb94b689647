// SPDX-License-Identifier: MIT
#include "input/panel_controls.h"

#include "audio/sound_engine.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/lamps.h"
#include "sequencer/pattern_edits.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "system_time.h"
#include "window_timers.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace percussomatic {

namespace {

struct PressedControl {
    int index;
    PixelPoint client;
    double scale;
};

// Switches the instrument off: it is muted and the panel goes dark immediately; the program ends
// when the timer fires.
void switchPowerOff(int power) {
    constexpr unsigned kPowerOffMs = 1000;
    controlState().toggleBit(power) = 0;
    const bool wasRunning = sequencer().running;
    setRunning(false);
    clockStop();
    soundEngine().setMasterVolume(0.0f);
    switchSoundOff();
    startTimer(WindowTimer::powerOff, kPowerOffMs);

    redrawControl(power, Repaint::later);
    if (wasRunning) {
        redrawControl(findControl(control::kStartStop), Repaint::later);
        redrawStepColumn(sequencer().currentStep);
        updateBeatLamp();
    }
    flushPainting();
}

Press beginRotaryDrag(const PressedControl& pressed) {
    panelState().rotaryDragIndex = pressed.index;
    RotaryState& rotary = *rotaryState(pressed.index);
    rotary.dragStartY = pressed.client.y;
    rotary.dragStartValue = rotary.value;
    rotary.dragging = true;
    return Press::held;
}

Press beginSliderDrag(const PressedControl& pressed) {
    PanelState& panel = panelState();
    panel.sliderDragIndex = pressed.index;
    panel.sliderDragStartX = layoutPoint(pressed.client, pressed.scale).x;
    panel.sliderDragStartOffset = static_cast<int>(controlState().offset(pressed.index));
    return Press::held;
}

Press pressStartStop(const PressedControl& /*pressed*/) {
    toggleRunning();
    return Press::handled;
}

Press pressEdit(const PressedControl& /*pressed*/) {
    toggleEditMode();
    return Press::handled;
}

Press pressLength(const PressedControl& pressed) {
    setSequenceLength(controlRole(pressed.index).length);
    return Press::handled;
}

Press pressClearAll(const PressedControl& /*pressed*/) {
    clearAll();
    return Press::held;
}

Press pressClearLine(const PressedControl& pressed) {
    clearLine(controlRole(pressed.index).line, pressed.index);
    return Press::held;
}

Press pressStep(const PressedControl& pressed) {
    toggleStep(controlRole(pressed.index).line, controlRole(pressed.index).step);
    return Press::held;
}

Press pressPower(const PressedControl& pressed) {
    if (!panelState().powerOffPending) {
        switchPowerOff(pressed.index);
    }
    return Press::handled;
}

Press pressToggle(const PressedControl& pressed) {
    controlState().toggleBit(pressed.index) ^= 1;
    redrawControl(pressed.index, Repaint::now);
    return Press::handled;
}

struct PressRule {
    ControlKind kind;
    bool (*hit)(int index, PixelPoint client, double scale) noexcept;
    Press (*press)(const PressedControl&);
};

// Where controls overlap, the first matching rule wins. Kinds without a rule ignore presses.
constexpr PressRule kPressRules[] = {
    {ControlKind::rotary, hitsControl, beginRotaryDrag},
    {ControlKind::slider, hitsControl, beginSliderDrag},
    {ControlKind::startStop, hitsControl, pressStartStop},
    {ControlKind::edit, hitsControl, pressEdit},
    {ControlKind::length, hitsControl, pressLength},
    {ControlKind::clearAll, hitsControl, pressClearAll},
    {ControlKind::clearLine, hitsControl, pressClearLine},
    {ControlKind::stepButton, hitsControl, pressStep},
    {ControlKind::power, showsControlAt, pressPower},
    {ControlKind::toggle, hitsControl, pressToggle},
};

const PressRule* ruleFor(int index) noexcept {
    return std::ranges::find(kPressRules, controlKind(index), &PressRule::kind);
}

void releaseHeld(int& held) {
    if (held != kNoControl) {
        const int index = held;
        held = kNoControl;
        redrawControl(index, Repaint::now);
    }
}

void releaseHeldControls() {
    Sequencer& now = sequencer();
    if (now.clearAllHeld) {
        now.clearAllHeld = false;
        redrawControl(findControl(control::kClearAll), Repaint::now);
    }
    releaseHeld(now.heldLineClear);
    releaseHeld(now.heldStepButton);
}

void dragRotary(int clientY, bool fine) {
    constexpr double kFullRangePixels = 420.0, kFineRangePixels = 1680.0;
    constexpr std::uint32_t kRepaintMs = 8;
    PanelState& panel = panelState();
    RotaryState* rotary = rotaryState(panel.rotaryDragIndex);
    if (rotary == nullptr || !rotary->dragging) {
        return;
    }
    const double range = fine ? kFineRangePixels : kFullRangePixels;
    const double value =
        std::clamp(rotary->dragStartValue + (rotary->dragStartY - clientY) / range, 0.0, 1.0);
    if (value == rotary->value) {
        return;
    }
    rotary->value = value;
    applyRotary(panel.rotaryDragIndex);
    if (const std::uint32_t now = tickCountMs(); now - panel.rotaryPaintedMs >= kRepaintMs) {
        panel.rotaryPaintedMs = now;
        redrawControl(panel.rotaryDragIndex, Repaint::now);
    }
}

void dragSlider(int clientX, double scale) {
    const PanelState& panel = panelState();
    const int x = scale > 0.0 ? layoutPoint({clientX, 0}, scale).x : 0;
    const int offset = panel.sliderDragStartOffset - panel.sliderDragStartX + x;
    std::uint32_t& stored = controlState().offset(panel.sliderDragIndex);
    const std::uint32_t old = stored;
    stored = static_cast<std::uint32_t>(std::clamp(offset, 0, kSliderTravel));
    if (stored != old) {
        redrawSlider(panel.sliderDragIndex, old);
    }
}

} // namespace

Press pressControl(PixelPoint client, double scale) {
    if (!(scale > 0.0)) {
        return Press::none;
    }
    const PressRule* rule = std::end(kPressRules);
    int pressed = kNoControl;
    for (int index = kControlCount - 1; index >= 0; --index) {
        const PressRule* candidate = ruleFor(index);
        if (candidate < rule && candidate->hit(index, client, scale)) {
            rule = candidate;
            pressed = index;
        }
    }
    const bool found = pressed != kNoControl;
    if (!found || (rule->kind != ControlKind::rotary && rule->kind != ControlKind::slider)) {
        releaseHeldControls(); // still held if a dialog, for example, received the release
    }
    return found ? rule->press({pressed, client, scale}) : Press::none;
}

bool dragControl(PixelPoint client, double scale, bool fine) {
    if (panelState().rotaryDragIndex != kNoControl) {
        dragRotary(client.y, fine);
        return true;
    }
    if (panelState().sliderDragIndex != kNoControl) {
        dragSlider(client.x, scale);
        return true;
    }
    return false;
}

void releaseControls() {
    releaseHeldControls();
    PanelState& panel = panelState();
    if (RotaryState* rotary = rotaryState(panel.rotaryDragIndex); rotary != nullptr) {
        rotary->dragging = false;
        redrawControl(panel.rotaryDragIndex, Repaint::now);
        panel.rotaryDragIndex = kNoControl;
    }
    panel.sliderDragIndex = kNoControl;
}

bool turnWheel(PixelPoint client, double scale, int delta, bool fine) {
    constexpr double kNotch = 120.0, kStep = 0.025, kFineStep = 0.005;
    const int index = topControlAt(client, scale, ControlKind::rotary);
    RotaryState* rotary = rotaryState(index);
    if (rotary == nullptr || delta == 0) {
        return false;
    }
    const double value =
        std::clamp(rotary->value + delta / kNotch * (fine ? kFineStep : kStep), 0.0, 1.0);
    if (value == rotary->value) {
        return true;
    }
    rotary->value = value;
    if (!rotary->dragging) {
        rotary->dragStartValue = value;
    }
    applyRotary(index);
    redrawControl(index, Repaint::now);
    return true;
}

} // namespace percussomatic
