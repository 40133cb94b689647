// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// Handles the step ticks in the message queue, ahead of all other messages. Called in between by
// operations that keep the GUI thread busy for long, so that they do not delay steps. GUI thread.
void handlePendingSteps();

// Like GetMessageW, but checks for input and timers every 20 ms even if posted messages are
// pending: MIDI messages are posted, and a flood of them would block mouse and keyboard. GUI
// thread.
BOOL nextMessage(MSG& message);

// Runs a modal window, with the keyboard navigation of dialogs, until its window procedure sets
// `done`. Disables the owner meanwhile; then destroys the window, enables the owner and brings it
// to the front. If the program quits meanwhile, posts the quit message again for the main loop;
// either window may have been destroyed by then. GUI thread.
void runModal(HWND window, HWND owner, const bool& done);

// Upper left corner of a window of that size, in screen pixels, that is centred over the owner.
POINT centredOver(HWND owner, int width, int height) noexcept;

} // namespace percussomatic
