// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace percussomatic {

// Timers of the main window; the values are their system ids. GUI thread.
enum class WindowTimer : std::uint32_t { powerOff = 2, cardInsertion = 3, midiGlide = 4 };

// No-ops without a main window. Starting a running timer restarts its period.
void startTimer(WindowTimer timer, unsigned periodMs);
void stopTimer(WindowTimer timer);

} // namespace percussomatic
