#include "sequencer/panel_state.h"

namespace percussomatic {

PanelState& panelState() noexcept {
    static PanelState state;
    return state;
}

void resetPanelState() noexcept {
    panelState() = PanelState{};
}

RotaryState* rotaryState(int index) noexcept {
    if (index == kNoControl) {
        return nullptr;
    }
    const ControlRow& row = controlRows()[static_cast<std::size_t>(index)];
    if (sameName(row.name, "rotary_001")) {
        return &panelState().master;
    }
    if (sameName(row.name, "rotary_002")) {
        return &panelState().tempo;
    }
    return nullptr;
}

} // namespace percussomatic
