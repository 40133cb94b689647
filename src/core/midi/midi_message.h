// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// Handles a short message as packed by the driver: status in the low byte, then two data bytes.
// Control Change is displayed, learned and applied; notes and pitch bend are displayed; clock,
// Start, Continue and Stop drive the transport. Other messages are ignored. GUI thread.
void handleMidiMessage(std::uint32_t message);

// Whether steps that became due after the message may be played before it. True for Control
// Changes, which arrive in floods, except those that start, stop or mute the rhythm.
bool mayFollowLaterSteps(std::uint32_t message) noexcept;

} // namespace percussomatic
