// SPDX-License-Identifier: MIT
#pragma once

#include "panel/display_scale.h"
#include "win32/graphics/owned.h"

#include <windows.h>

#include <cstdint>

namespace percussomatic {

// What the tool windows and dialogs share. Positions and sizes are pixels at 96 DPI, scaled to the
// window's DPI: that of the display, or less if the window would not fit the screen. GUI thread.

using GdiFont = Owned<HFONT, DeleteObject>;
using GdiBrush = Owned<HBRUSH, DeleteObject>;

// Colours are 0xRRGGBB.
constexpr COLORREF colour(std::uint32_t rgb) noexcept {
    return RGB((rgb >> 16) & 0xFF, (rgb >> 8) & 0xFF, rgb & 0xFF);
}
inline constexpr std::uint32_t kToolWindowFill = 0x1C1B19, kToolWindowText = 0xE8DDC1;

// Registers the class unless it exists already. False on failure.
bool registerToolWindowClass(const wchar_t* name, WNDPROC procedure, HBRUSH background);

// Called on WM_CREATE, before any control is added. Moves the window into the work area of its
// monitor, shrinks it if it is larger than that, and returns the DPI for its controls and fonts.
int fitToWorkArea(HWND window, const WindowDesign& design);

// One row of a window's table of controls.
struct ControlDefinition {
    const wchar_t* windowClass;
    const wchar_t* text;
    int x, y, width, height; // in the client area
    int id = 0;
    DWORD style = 0, extendedStyle = 0; // in addition to WS_CHILD and WS_VISIBLE
};

// The caller owns the font, which must outlive the control.
HWND addControl(HWND window, const ControlDefinition& place, HFONT font, int dpi);

// Segoe UI with ClearType; weight as in CreateFontW.
GdiFont segoeFont(int pixels, int weight, int dpi);

// The system's font for controls, scaled; lives as long as the program.
HFONT controlFont(int dpi);

// The result of WM_CTLCOLORSTATIC and WM_CTLCOLORBTN: light text, transparent over the brush.
LRESULT colourStatic(WPARAM deviceContext, HBRUSH background) noexcept;

struct ButtonColours {
    std::uint32_t fill, border, text;
};

// Draws an owner-drawn push button: filled, with a one-pixel border and a caption of one line.
void drawButton(const DRAWITEMSTRUCT& item, const ButtonColours& colours);

// Shows the window, restores it if it is minimised, and brings it to the front.
void showToolWindow(HWND window);

// Hides the window without destroying it and returns the focus to its owner.
void hideToolWindow(HWND window);

} // namespace percussomatic
