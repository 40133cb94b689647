#include "sequencer/sequencer.h"

#include "audio/sound_engine.h"
#include "sequencer/front_panel.h"
#include "sequencer/panel_state.h"
#include "sequencer/system.h"
#include "sequencer/transport.h"
#include "ui/assets.h"
#include "ui/redraw.h"

namespace percussomatic {

namespace {

std::int32_t loadAsset(std::string_view name) {
    const AssetBytes asset = findAsset(name);
    return soundEngine().loadSample(asset.bytes, asset.size);
}

void redrawSetSteps(int line) {
    for (int step = 0; step < kStepCount; ++step) {
        if (sequencer().pattern.isSet(line, step)) {
            redrawControl(stepButtonIndex(line, step), Repaint::later);
        }
    }
}

} // namespace

Sequencer& sequencer() noexcept {
    static Sequencer state;
    return state;
}

void resetSequencer() noexcept {
    const auto indices = sequencer().sampleIndices;
    sequencer() = Sequencer{};
    sequencer().sampleIndices = indices;
}

void loadLineSamples() {
    for (std::size_t line = 0; line < kRhythmLines.size(); ++line) {
        sequencer().sampleIndices[2 * line] = loadAsset(kRhythmLines[line].sampleA);
        sequencer().sampleIndices[2 * line + 1] = loadAsset(kRhythmLines[line].sampleB);
    }
}

float lineVolume(int line) noexcept {
    if (line < 0 || line >= kLineCount) {
        return 0.0f;
    }
    const int slider = findControl(kRhythmLines[static_cast<std::size_t>(line)].slider);
    if (slider == kNoControl) {
        return 0.0f;
    }
    return static_cast<float>(controlState().sliderOffset[static_cast<std::size_t>(slider)]) /
           static_cast<float>(kSliderTravel);
}

bool isSwitchOn(std::string_view name) noexcept {
    const int index = findControl(name);
    if (index == kNoControl || !isToggle(controlRows()[static_cast<std::size_t>(index)])) {
        return false;
    }
    return controlState().toggleBits[static_cast<std::size_t>(index)] != 0;
}

void triggerStep(std::uint32_t step) {
    const Sequencer& now = sequencer();
    if (now.editMode || step >= kStepCount) {
        return;
    }
    for (int line = 0; line < kLineCount; ++line) {
        if (!now.pattern.isSet(line, static_cast<int>(step))) {
            continue;
        }
        const float gain = lineVolume(line);
        if (gain <= 0.0f) {
            continue;
        }
        const auto at = static_cast<std::size_t>(line);
        if (isSwitchOn(kRhythmLines[at].switchA)) {
            soundEngine().trigger(now.sampleIndices[2 * at], gain);
        }
        if (isSwitchOn(kRhythmLines[at].switchB)) {
            soundEngine().trigger(now.sampleIndices[2 * at + 1], gain);
        }
    }
}

void onStepTick() {
    Sequencer& now = sequencer();
    if (!now.running) {
        return;
    }
    const std::uint32_t old = now.currentStep;
    now.currentStep = (old + 1) % now.sequenceLength;
    triggerStep(now.currentStep);
    updateBeatLamp();
    if (!now.editMode) {
        redrawStepColumn(old);
        redrawStepColumn(now.currentStep);
    }
    flushPainting();
}

void toggleRunning() {
    Sequencer& now = sequencer();
    const std::uint32_t old = now.currentStep;
    now.running = !now.running;
    if (now.running) {
        now.currentStep = 0;
        triggerStep(0); // the first beat sounds with the press; the first tick plays step 1
    }
    clockStart(mainWindow());
    redrawControl(findControl("sw_007"), Repaint::later);
    updateBeatLamp();
    if (!now.editMode) {
        redrawStepColumn(old);
        redrawStepColumn(now.currentStep);
    }
    flushPainting();
}

void toggleEditMode() {
    Sequencer& now = sequencer();
    now.editMode = !now.editMode;
    // Switched off, the instrument stays silent whatever is pressed in its last second.
    soundEngine().outputMuted = now.editMode || panelState().powerOffPending ? 1 : 0;
    if (now.editMode) {
        soundEngine().stopAllVoicesRequest = 1;
    }
    redrawControl(findControl("sw_008"), Repaint::later);
    updateBeatLamp();
    for (int line = 0; line < kLineCount; ++line) {
        redrawSetSteps(line);
    }
    flushPainting();
}

void setSequenceLength(std::uint32_t length) {
    Sequencer& now = sequencer();
    if (length == now.sequenceLength) {
        return;
    }
    for (const LengthSwitch& each : kLengthSwitches) {
        redrawControl(findControl(each.name), Repaint::later);
    }
    now.sequenceLength = length;
    if (now.currentStep >= length) {
        const bool columnShows = now.running && !now.editMode;
        if (columnShows) {
            redrawStepColumn(now.currentStep);
        }
        now.currentStep = 0;
        if (columnShows) {
            redrawStepColumn(0);
        }
        updateBeatLamp();
    }
    flushPainting();
}

void toggleStep(int line, int step) {
    Sequencer& now = sequencer();
    now.pattern.set(line, step, !now.pattern.isSet(line, step));
    now.heldStepButton = stepButtonIndex(line, step);
    redrawControl(now.heldStepButton, Repaint::now);
}

void clearAll() {
    Sequencer& now = sequencer();
    now.clearAllHeld = true;
    redrawControl(findControl("sw_018"), Repaint::later);
    for (int line = 0; line < kLineCount; ++line) {
        redrawSetSteps(line);
    }
    now.pattern = Pattern{};
    flushPainting();
}

void clearLine(int line, int clearSwitch) {
    Sequencer& now = sequencer();
    now.heldLineClear = clearSwitch;
    redrawControl(clearSwitch, Repaint::later);
    redrawSetSteps(line);
    for (int step = 0; step < kStepCount; ++step) {
        now.pattern.set(line, step, false);
    }
    flushPainting();
}

bool stepLampLit(int control) noexcept {
    const int number = stepButtonNumber(controlRows()[static_cast<std::size_t>(control)]);
    if (number == 0) {
        return false;
    }
    const Sequencer& now = sequencer();
    const int step = stepButtonStep(number);
    if (!now.pattern.isSet(stepButtonLine(number), step)) {
        return false;
    }
    return now.editMode || (now.running && static_cast<std::uint32_t>(step) == now.currentStep) ||
           control == now.heldStepButton;
}

bool beatLampLit() noexcept {
    const Sequencer& now = sequencer();
    return now.running && (now.editMode || now.currentStep == 0);
}

void updateBeatLamp() {
    const bool lit = beatLampLit();
    if (lit == sequencer().beatLampShown) {
        return;
    }
    sequencer().beatLampShown = lit;
    redrawControl(findControl("bin_001"), Repaint::later);
}

void redrawStepColumn(std::uint32_t step) {
    for (int line = 0; line < kLineCount && step < kStepCount; ++line) {
        if (sequencer().pattern.isSet(line, static_cast<int>(step))) {
            redrawControl(stepButtonIndex(line, static_cast<int>(step)), Repaint::later);
        }
    }
}

} // namespace percussomatic
