#pragma once

#include <cstdint>

namespace percussomatic {

// A short message as the driver packs it: status in the low byte, then the two data bytes. Shows,
// learns and applies Control Change, shows notes and pitch bend, follows clock, Start, Continue and
// Stop; ignores all else. GUI thread.
void handleMidiMessage(std::uint32_t message);

} // namespace percussomatic
