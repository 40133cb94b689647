#pragma once

#include "sound.h"
#include <cstdint>
#include <vector>

namespace recordings {

// What turns a voice's raw sound into a recording of the kit.
struct Finish {
    double clipDrive; // into the output stage's soft clip, 0 for none; 1.5 is already thick
    double clipBias;  // 0 clips both halves alike, for odd partials only
    double lowCutHz;  // the coupling of the output stage: no offset, no rumble
    double endFadeMs;
    double peakDb; // within the kit; finish() then lowers all twelve alike
};

// Soft clip, low cut, band limit, fades, level, and once, last, 24 bits. Returns
// interleaved samples of sound's length, padded with digital silence to frames.
std::vector<std::int32_t> finish(Sound sound, const Finish& how, std::size_t frames);

} // namespace recordings
