#pragma once

#include "win32/graphics/owned.h"

#include <windows.h>

#include <cstdint>

namespace percussomatic {

// What the small windows beside the panel have in common. Places and sizes are written for 96 DPI
// and grow with the display. GUI thread.

using GdiFont = Owned<HFONT, DeleteObject>;
using GdiBrush = Owned<HBRUSH, DeleteObject>;

// Colours are 0xRRGGBB.
constexpr COLORREF colour(std::uint32_t rgb) noexcept {
    return RGB((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF);
}
inline constexpr std::uint32_t kToolWindowFill = 0x1C1B19, kToolWindowText = 0xE8DDC1;

// Registers once; a class that is there already is as good. False when the system refuses.
bool registerToolWindowClass(const wchar_t* name, WNDPROC procedure, HBRUSH background);

// One row of a window's table of controls.
struct ControlPlace {
    const wchar_t* windowClass;
    const wchar_t* text;
    int x, y, width, height; // of the client area
    int id = 0;
    DWORD style = 0, extendedStyle = 0; // besides child and visible
};

// The font is the caller's and must live as long as the control.
HWND addControl(HWND window, const ControlPlace& place, HFONT font);

// Segoe UI with ClearType.
GdiFont segoeFont(int pixels, int weight);

// The system's font for controls in the display's size; lives as long as the program.
HFONT controlFont();

// The answer to WM_CTLCOLORSTATIC and WM_CTLCOLORBTN: light text on nothing over the brush.
LRESULT colourStatic(WPARAM deviceContext, HBRUSH background) noexcept;

struct ButtonColours {
    std::uint32_t fill, border, text;
};

// A push button that its window draws: filled, with a one-pixel border and its caption on one line.
void drawButton(const DRAWITEMSTRUCT& item, const ButtonColours& colours);

// Shows a window, restores it if it is minimised, and puts it in front of all others.
void showToolWindow(HWND window);

// Hides a window that is kept for the next time and gives the keyboard back to its owner.
void hideToolWindow(HWND window);

} // namespace percussomatic
