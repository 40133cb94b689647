#pragma once

#include <windows.h>

namespace percussomatic {

// Posted to the main window by the step clock when a step is due; no parameters.
inline constexpr UINT kStepTickMessage = WM_APP + 0x5B;

// Handles the steps that wait in the queue, before its turn comes to whatever else waits there:
// called by whoever keeps the thread for long. GUI thread.
void serveWaitingSteps();

// As GetMessageW, which hands out input and timers only when nothing is posted. What MIDI sends is
// posted, so in a storm of it the player's hands and the timers have a turn now and then. GUI
// thread.
BOOL nextMessage(MSG& message);

// Runs a modal window of ours with the keyboard navigation of dialogs until `done` is set by its
// window procedure. The owner is disabled meanwhile; afterwards the window is destroyed and the
// owner enabled and in front again. When the program ends or the owner goes in between, the quit
// message is left in the queue and nothing that is gone is touched. GUI thread.
void runModal(HWND window, HWND owner, const bool& done);

// A window that size, its middle over the owner's middle: its upper left corner.
POINT centredOver(HWND owner, int width, int height) noexcept;

} // namespace percussomatic
