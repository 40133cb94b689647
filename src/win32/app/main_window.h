// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// The panel's window. Its procedure turns messages of the system into calls of the core and carries
// out what those ask for; it decides nothing. GUI thread.

inline constexpr wchar_t kMainWindowClass[] = L"LumivardaLayoutPreviewWindow";

LRESULT CALLBACK mainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Size in pixels of a panel at this layout scale on the main screen.
SIZE panelSizeAt(double scale) noexcept;

} // namespace percussomatic
