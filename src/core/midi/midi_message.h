// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// Handles a short message as packed by the driver: status in the low byte, then two data bytes.
// Control Change is displayed, learned and applied; notes and pitch bend are displayed; clock,
// Start, Continue and Stop drive the transport. Other messages are ignored. GUI thread.
void handleMidiMessage(std::uint32_t message);

} // namespace percussomatic
