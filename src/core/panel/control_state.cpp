// SPDX-License-Identifier: MIT
#include "panel/control_state.h"

#include "panel/control_names.h"

namespace percussomatic {

ControlState& controlState() noexcept {
    static ControlState state;
    return state;
}

void resetControlState() noexcept {
    controlState() = ControlState{};
    if (const int power = findControl(control::kPower); power != kNoControl) {
        controlState().toggleBit(power) = 1;
    }
}

} // namespace percussomatic
