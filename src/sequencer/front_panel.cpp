#include "sequencer/front_panel.h"

#include "audio/sound_engine.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "ui/redraw.h"

#include <algorithm>
#include <cstddef>

namespace percussomatic {

namespace {

const ControlRow& rowAt(int index) {
    return controlRows()[static_cast<std::size_t>(index)];
}

bool isNamed(int index, std::string_view name) {
    return sameName(rowAt(index).name, name);
}

// Steps, or 0 for any other control.
std::uint32_t lengthOf(int index) noexcept {
    for (const LengthSwitch& each : kLengthSwitches) {
        if (isNamed(index, each.name)) {
            return each.length;
        }
    }
    return 0;
}

// Line 0..5 that the switch clears, or -1.
int clearedLine(int index) noexcept {
    for (int line = 0; line < kLineCount; ++line) {
        if (isNamed(index, kLineClearSwitches[static_cast<std::size_t>(line)])) {
            return line;
        }
    }
    return -1;
}

bool isPlainToggle(int index) {
    return isToggle(rowAt(index)) && !isNamed(index, "pw_001") && !isNamed(index, "sw_007") &&
           !isNamed(index, "sw_008") && !isNamed(index, "sw_018") && lengthOf(index) == 0 &&
           clearedLine(index) < 0 && stepButtonNumber(rowAt(index)) == 0;
}

Press pressSequencerControl(PixelPoint client, double scale) {
    const auto at = [&](auto accept) { return topControlAt(client, scale, accept); };
    const auto named = [&](std::string_view name) {
        return at([name](int index) { return isNamed(index, name); }) != kNoControl;
    };
    if (named("sw_007")) {
        toggleRunning();
        return Press::acted;
    }
    if (named("sw_008")) {
        toggleEditMode();
        return Press::acted;
    }
    if (const int index = at([](int i) { return lengthOf(i) != 0; }); index != kNoControl) {
        setSequenceLength(lengthOf(index));
        return Press::acted;
    }
    if (named("sw_018")) {
        clearAll();
        return Press::held;
    }
    if (const int index = at([](int i) { return clearedLine(i) >= 0; }); index != kNoControl) {
        clearLine(clearedLine(index), index);
        return Press::held;
    }
    const int step = at([](int i) { return stepButtonNumber(rowAt(i)) != 0; });
    if (step == kNoControl) {
        return Press::none;
    }
    const int number = stepButtonNumber(rowAt(step));
    toggleStep(stepButtonLine(number), stepButtonStep(number));
    return Press::held;
}

void switchPowerOff(int power) {
    constexpr unsigned kPowerOffMs = 1000; // the panel is seen going dark before the program ends
    panelState().powerOffPending = true;
    controlState().toggleBits[static_cast<std::size_t>(power)] = 0;
    const bool wasRunning = sequencer().running;
    sequencer().running = false;
    clockStop();
    SoundEngine& engine = soundEngine();
    engine.setMasterVolume(0.0f);
    engine.outputMuted = 1;
    engine.stopAllVoicesRequest = 1;
    startTimer(WindowTimer::powerOff, kPowerOffMs);

    redrawControl(power, Repaint::later);
    if (wasRunning) {
        redrawControl(findControl("sw_007"), Repaint::later);
        redrawStepColumn(sequencer().currentStep);
        updateBeatLamp();
    }
    flushPainting();
}

void setSliderOffset(int index, int offset) {
    std::uint32_t& stored = controlState().sliderOffset[static_cast<std::size_t>(index)];
    const std::uint32_t old = stored;
    stored = static_cast<std::uint32_t>(std::clamp(offset, 0, kSliderTravel));
    if (stored != old) {
        redrawSlider(index, old);
    }
}

} // namespace

Press pressControl(PixelPoint client, double scale) {
    if (!(scale > 0.0)) {
        return Press::none;
    }
    releaseControls(); // left over when the release went elsewhere, to a dialog say
    if (const Press press = pressSequencerControl(client, scale); press != Press::none) {
        return press;
    }

    const int power = findControl("pw_001");
    if (power != kNoControl && contains(controlClientRect(power, scale), client)) {
        if (!panelState().powerOffPending) {
            switchPowerOff(power);
        }
        return Press::acted;
    }

    const int toggle = topControlAt(client, scale, isPlainToggle);
    if (toggle == kNoControl) {
        return Press::none;
    }
    controlState().toggleBits[static_cast<std::size_t>(toggle)] ^= 1;
    redrawControl(toggle, Repaint::now);
    return Press::acted;
}

bool releaseControls() {
    Sequencer& now = sequencer();
    bool released = false;
    const auto release = [&released](int index) {
        redrawControl(index, Repaint::now);
        released = true;
    };
    if (now.clearAllHeld) {
        now.clearAllHeld = false;
        release(findControl("sw_018"));
    }
    for (int* held : {&now.heldLineClear, &now.heldStepButton}) {
        if (*held == kNoControl) {
            continue;
        }
        const int index = *held;
        *held = kNoControl;
        release(index);
    }
    return released;
}

bool beginRotaryDrag(PixelPoint client, double scale) {
    const int index = rotaryAt(client, scale);
    RotaryState* rotary = rotaryState(index);
    if (rotary == nullptr) {
        return false;
    }
    panelState().rotaryDragIndex = index;
    rotary->dragStartY = client.y;
    rotary->dragStartValue = rotary->value;
    rotary->dragging = true;
    return true;
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

void endRotaryDrag() {
    PanelState& panel = panelState();
    RotaryState* rotary = rotaryState(panel.rotaryDragIndex);
    if (rotary == nullptr) {
        return;
    }
    rotary->dragging = false;
    redrawControl(panel.rotaryDragIndex, Repaint::now);
    panel.rotaryDragIndex = kNoControl;
}

bool beginSliderDrag(PixelPoint client, double scale) {
    const int index = sliderAt(client, scale);
    if (index == kNoControl) {
        return false;
    }
    PanelState& panel = panelState();
    panel.sliderDragIndex = index;
    panel.sliderDragStartX = layoutPoint(client, scale).x;
    panel.sliderDragStartOffset =
        static_cast<int>(controlState().sliderOffset[static_cast<std::size_t>(index)]);
    return true;
}

void dragSlider(int clientX, double scale) {
    const PanelState& panel = panelState();
    if (panel.sliderDragIndex == kNoControl) {
        return;
    }
    const int x = scale > 0.0 ? layoutPoint({clientX, 0}, scale).x : 0;
    setSliderOffset(panel.sliderDragIndex,
                    panel.sliderDragStartOffset - panel.sliderDragStartX + x);
}

void endSliderDrag() {
    panelState().sliderDragIndex = kNoControl;
}

bool turnWheel(PixelPoint client, double scale, int delta, bool fine) {
    constexpr double kNotch = 120.0, kStep = 0.025, kFineStep = 0.005;
    const int index = rotaryAt(client, scale);
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

void applyRotary(int index) {
    const RotaryState* rotary = rotaryState(index);
    if (rotary == &panelState().tempo) {
        setTempoFromRotary(rotary->value);
    } else if (rotary != nullptr) {
        soundEngine().setMasterVolume(static_cast<float>(rotary->value * rotary->value));
    }
}

bool controlLit(int index) noexcept {
    const ControlRow& row = rowAt(index);
    const Sequencer& now = sequencer();
    if (isBeatLamp(row)) {
        return beatLampLit();
    }
    if (isNamed(index, "sw_007")) {
        return now.running;
    }
    if (isNamed(index, "sw_008")) {
        return now.editMode;
    }
    const bool toggledOn =
        isToggle(row) && controlState().toggleBits[static_cast<std::size_t>(index)] != 0;
    if (isNamed(index, "sw_018")) {
        return now.clearAllHeld || toggledOn; // only MIDI sets the bit of a clear switch
    }
    if (clearedLine(index) >= 0) {
        return index == now.heldLineClear || toggledOn;
    }
    if (const std::uint32_t length = lengthOf(index); length != 0) {
        return length == now.sequenceLength;
    }
    if (stepButtonNumber(row) != 0) {
        return stepLampLit(index);
    }
    return toggledOn;
}

} // namespace percussomatic
