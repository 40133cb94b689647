// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// Handles the steps that are pending in the message queue, ahead of everything else in it. Called
// by whatever keeps the GUI thread busy for long.
void serveWaitingSteps();

// Like GetMessageW, but input and timers get a turn every 20 ms even while posted messages are
// pending: MIDI messages are posted, and a flood of them would lock the player out. GUI thread.
BOOL nextMessage(MSG& message);

// Runs a modal window with the keyboard navigation of dialogs until its window procedure sets
// `done`. The owner is disabled meanwhile; afterwards the window is destroyed, and the owner is
// enabled and brought to the front. If the program ends meanwhile, the quit message stays in the
// queue and no destroyed window is touched. GUI thread.
void runModal(HWND window, HWND owner, const bool& done);

// Upper left corner of a window of that size, centred over the owner.
POINT centredOver(HWND owner, int width, int height) noexcept;

} // namespace percussomatic
