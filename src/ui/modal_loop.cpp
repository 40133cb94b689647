#include "ui/modal_loop.h"

namespace percussomatic {

void runModal(HWND window, HWND owner, const bool& done) {
    EnableWindow(owner, FALSE);
    MSG message{};
    while (!done && IsWindow(window) != 0) {
        const BOOL got = GetMessageW(&message, nullptr, 0, 0);
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
