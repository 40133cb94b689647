// SPDX-License-Identifier: MIT
#include "panel/panel_state.h"

#include "panel/control_names.h"

namespace percussomatic {

PanelState& panelState() noexcept {
    static PanelState state;
    return state;
}

void resetPanelState() noexcept {
    panelState() = PanelState{};
}

RotaryState* rotaryState(int index) noexcept {
    if (index == kNoControl || controlKind(index) != ControlKind::rotary) {
        return nullptr;
    }
    return sameName(controlRow(index).name, control::kMasterRotary) ? &panelState().master
                                                                    : &panelState().tempo;
}

} // namespace percussomatic
