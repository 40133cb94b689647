// SPDX-License-Identifier: MIT
#pragma once

#include "sound.h"
#include <cstdint>
#include <vector>

namespace recordings {

// How a voice's raw sound becomes a finished recording.
struct FinishSettings {
    double clipDrive;  // of the soft clip; 0 bypasses it, 1.5 distorts audibly
    double clipBias;   // 0 clips symmetrically, which adds odd partials only
    double highPassHz; // removes DC and rumble, like an output coupling capacitor
    double endFadeMs;
    double peakDb; // dBFS, before finish() trims all twelve by the same amount
};

// Applies soft clip, high-pass, band limit, fades and level, then quantises to 24 bits.
// Returns interleaved stereo samples, cut or padded with zeros to frames.
std::vector<std::int32_t> finish(Sound sound, const FinishSettings& settings, std::size_t frames);

} // namespace recordings
