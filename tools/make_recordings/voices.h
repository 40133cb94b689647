#pragma once

#include "finishing.h"
#include "sound.h"
#include <span>
#include <string_view>

namespace recordings {

// One function per instrument. Each returns the raw sound at any level, long enough
// to die away; its line in the table says how it becomes a recording.
Sound bassDrum(std::size_t frames);
Sound highTimbal(std::size_t frames);
Sound lowTimbal(std::size_t frames);
Sound snare(std::size_t frames);
Sound rollingSnare(std::size_t frames);
Sound highBlock(std::size_t frames);
Sound lowBlock(std::size_t frames);
Sound clave(std::size_t frames);
Sound charleston(std::size_t frames);
Sound crashCymbal(std::size_t frames);
Sound rideCymbal(std::size_t frames);
Sound triangle(std::size_t frames);

struct Voice {
    std::string_view name; // of the file, without ".wav"
    Sound (*render)(std::size_t frames);
    std::size_t fileFrames;
    double soundingMs; // rendered and faded out by then; the file's rest is digital zero
    Finish finish;
};

std::span<const Voice> voices() noexcept; // all twelve, by name

} // namespace recordings
