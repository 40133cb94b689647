#pragma once

#include <windows.h>

namespace percussomatic {

// The panel's window: turns messages into calls on the other rooms and decides nothing itself.
// GUI thread.

inline constexpr wchar_t kMainWindowClass[] = L"LumivardaLayoutPreviewWindow";

// Posted when a card could not be saved; no parameters.
inline constexpr UINT kCardProblemMessage = WM_APP + 0x5C;

LRESULT CALLBACK mainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// The window that `mainWindow()` answers from now on; null while it is being destroyed.
void setMainWindow(HWND window) noexcept;

// The player's size of the panel, 0.25..1.0; read once at start-up.
double& layoutScale() noexcept;

} // namespace percussomatic
