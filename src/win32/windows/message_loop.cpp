// SPDX-License-Identifier: MIT
#include "win32/windows/message_loop.h"

#include "main_window_handle.h"
#include "win32/messages.h"

namespace percussomatic {

void handlePendingSteps() {
    auto* const window = static_cast<HWND>(mainWindow());
    MSG message{};
    while (window != nullptr &&
           PeekMessageW(&message, window, kStepTickMessage, kStepTickMessage, PM_REMOVE) != 0) {
        if (message.message == WM_QUIT) { // passes every filter; put back for the message loop
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        DispatchMessageW(&message);
    }
}

BOOL nextMessage(MSG& message) {
    constexpr DWORD kPollIntervalMs = 20;
    struct Poll {
        UINT message, flags;
        DWORD lastMs;
    };
    static Poll polls[] = {{0, PM_QS_INPUT, 0}, {WM_TIMER, 0, 0}};
    for (Poll& poll : polls) {
        const DWORD nowMs = GetTickCount();
        if (nowMs - poll.lastMs < kPollIntervalMs) {
            continue;
        }
        poll.lastMs = nowMs;
        if (PeekMessageW(&message, nullptr, poll.message, poll.message, PM_REMOVE | poll.flags) !=
            0) {
            return message.message == WM_QUIT ? FALSE : TRUE; // WM_QUIT passes every filter
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
            PostQuitMessage(static_cast<int>(message.wParam)); // for the main loop
            break;
        }
        if (IsDialogMessageW(window, &message) == 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    // The owner is enabled before the window is destroyed: otherwise the system activates a window
    // of another program.
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
