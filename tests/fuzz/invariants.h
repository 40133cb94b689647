#pragma once

namespace percussomatic::fuzz {

// What holds between any two acts on the instrument, whatever they are.
void checkInvariants();

} // namespace percussomatic::fuzz
