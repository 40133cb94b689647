// SPDX-License-Identifier: MIT
#pragma once

#include "finishing.h"
#include "sound.h"
#include <span>
#include <string_view>

namespace recordings {

// One function per instrument. Each renders the raw sound, at an arbitrary level; its row
// in the table of voices() says how it becomes a finished recording.
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
    double soundingMs; // length rendered, fade-out included; the rest of the file is zeros
    FinishSettings finish;
};

std::span<const Voice> voices() noexcept; // all twelve, sorted by name

} // namespace recordings
