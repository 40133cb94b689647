// SPDX-License-Identifier: MIT
#include "win32/windows/message_loop.h"

#include "main_window_handle.h"
#include "win32/messages.h"

namespace percussomatic {

void serveWaitingSteps() {
    auto* const window = static_cast<HWND>(mainWindow());
    MSG message{};
    while (window != nullptr &&
           PeekMessageW(&message, window, kStepTickMessage, kStepTickMessage, PM_REMOVE) != 0) {
        if (message.message == WM_QUIT) { // comes through every filter, and stays for the loop
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageW(&message);
    }
}

BOOL nextMessage(MSG& message) {
    constexpr DWORD kTurnMs = 20;
    struct Turn {
        UINT message, flags;
        DWORD lastMs;
    };
    static Turn turns[] = {{0, PM_QS_INPUT, 0}, {WM_TIMER, 0, 0}};
    for (Turn& turn : turns) {
        const DWORD nowMs = GetTickCount();
        if (nowMs - turn.lastMs < kTurnMs) {
            continue;
        }
        turn.lastMs = nowMs;
        if (PeekMessageW(&message, nullptr, turn.message, turn.message, PM_REMOVE | turn.flags) !=
            0) {
            return message.message == WM_QUIT ? FALSE : TRUE; // which comes through every filter
        }
    }
    return GetMessageW(&message, nullptr, 0, 0);
}

void runModal(HWND window, HWND owner, const bool& done) {
    EnableWindow(owner, FALSE);
    MSG message{};
    while (!done && IsWindow(window) != 0) {
        const BOOL got = nextMessage(message);
        if (got <= 0) {
            PostQuitMessage(static_cast<int>(message.wParam)); // the main loop waits for it too
            break;
        }
        if (IsDialogMessageW(window, &message) == 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    // Enabled before the window goes, or the system would put another program in front.
    if (IsWindow(owner) != 0) {
        EnableWindow(owner, TRUE);
        SetForegroundWindow(owner);
    }
    if (IsWindow(window) != 0) {
        DestroyWindow(window);
    }
}

POINT centredOver(HWND owner, int width, int height) noexcept {
    RECT place{};
    GetWindowRect(owner, &place);
    return {place.left + (place.right - place.left - width) / 2,
            place.top + (place.bottom - place.top - height) / 2};
}

} // namespace percussomatic
