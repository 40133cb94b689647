// SPDX-License-Identifier: MIT
#include "sequencer/sequencer.h"

#include "assets/assets.h"
#include "audio/sound_engine.h"
#include "panel/control_names.h"
#include "panel/control_state.h"

namespace percussomatic {

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
    for (std::size_t index = 0; index < kInstrumentCount; ++index) {
        const AssetBytes asset = findAsset(kInstruments[index].recording);
        sequencer().sampleIndices[index] = soundEngine().loadSample(asset.bytes, asset.size);
    }
}

float lineVolume(int line) noexcept {
    if (line < 0 || line >= kLineCount) {
        return 0.0f;
    }
    const int slider = findControl(control::line(line).slider);
    return slider == kNoControl ? 0.0f
                                : static_cast<float>(controlState().offset(slider)) /
                                      static_cast<float>(kSliderTravel);
}

bool isSwitchOn(std::string_view name) noexcept {
    const int index = findControl(name);
    return index != kNoControl && isToggle(controlRow(index)) &&
           controlState().toggleBit(index) != 0;
}

void triggerStep(std::uint32_t step, std::int64_t dueNs) {
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
        for (int instrument = 0; const std::string_view name : control::line(line).switches) {
            if (isSwitchOn(name)) {
                soundEngine().triggerAt(now.sampleIndices[sampleIndexOf(line, instrument)], gain,
                                        dueNs);
            }
            ++instrument;
        }
    }
}

} // namespace percussomatic
