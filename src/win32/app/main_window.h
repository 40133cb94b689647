// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

namespace percussomatic {

// The panel's window. Its procedure translates window messages into calls of the core and carries
// out the requests that they return; it takes no decisions. GUI thread.

inline constexpr wchar_t kMainWindowClass[] = L"LumivardaLayoutPreviewWindow";

LRESULT CALLBACK mainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

// Size in pixels of the panel at a layout scale (0..1) on the primary screen.
SIZE panelSizeAt(double scale) noexcept;

} // namespace percussomatic
