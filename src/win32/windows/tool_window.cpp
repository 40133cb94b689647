// SPDX-License-Identifier: MIT
#include "win32/windows/tool_window.h"

#include "win32/windows/message_loop.h"

#include <algorithm>
#include <array>
#include <map>

namespace percussomatic {

bool registerToolWindowClass(const wchar_t* name, WNDPROC procedure, HBRUSH background) {
    WNDCLASSW windowClass{};
    windowClass.lpfnWndProc = procedure;
    windowClass.hInstance = GetModuleHandleW(nullptr);
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.hbrBackground = background;
    windowClass.lpszClassName = name;
    return RegisterClassW(&windowClass) != 0 || GetLastError() == ERROR_CLASS_ALREADY_EXISTS;
}

int fitToWorkArea(HWND window, const WindowDesign& design) {
    RECT place{}, frame{};
    GetWindowRect(window, &place);
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE)));
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromRect(&place, MONITOR_DEFAULTTONEAREST), &monitor);
    const RECT& work = monitor.rcWork;
    const auto sizeOf = [](const RECT& rect) {
        return Size{static_cast<int>(rect.right - rect.left),
                    static_cast<int>(rect.bottom - rect.top)};
    };
    const int dpi = dpiThatFits(design, sizeOf(frame), sizeOf(work));
    const Size old = sizeOf(place), size = outerSize(design, sizeOf(frame), dpi);
    const LONG left = place.left + (old.width - size.width) / 2;
    const LONG top = place.top + (old.height - size.height) / 2;
    SetWindowPos(window, nullptr, std::max(work.left, std::min(left, work.right - size.width)),
                 std::max(work.top, std::min(top, work.bottom - size.height)), size.width,
                 size.height, SWP_NOZORDER | SWP_NOACTIVATE);
    return dpi;
}

HWND addControl(HWND window, const ControlDefinition& place, HFONT font, int dpi) {
    const auto px = [dpi](int value) { return scaledForDpi(value, dpi); };
    HWND control = CreateWindowExW(place.extendedStyle, place.windowClass, place.text,
                                   WS_CHILD | WS_VISIBLE | place.style, px(place.x), px(place.y),
                                   px(place.width), px(place.height), window,
                                   reinterpret_cast<HMENU>(static_cast<INT_PTR>(place.id)),
                                   GetModuleHandleW(nullptr), nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    handlePendingSteps(); // creating a window with many controls is slow
    return control;
}

GdiFont segoeFont(int pixels, int weight, int dpi) {
    return GdiFont(CreateFontW(-scaledForDpi(pixels, dpi), 0, 0, 0, weight, FALSE, FALSE, FALSE,
                               DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                               CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE, L"Segoe UI"));
}

HFONT controlFont(int dpi) {
    auto* const stock = static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
    if (dpi == kDesignDpi) {
        return stock;
    }
    static std::map<int, GdiFont> fonts;
    const auto [entry, isNew] = fonts.try_emplace(dpi);
    if (isNew) {
        constexpr int kStockHeight = 11; // pixels; the stock font ignores the DPI
        LOGFONTW font{};
        GetObjectW(stock, sizeof font, &font);
        font.lfHeight = -scaledForDpi(kStockHeight, dpi);
        entry->second = GdiFont(CreateFontIndirectW(&font));
    }
    return entry->second.get();
}

LRESULT colourStatic(WPARAM deviceContext, HBRUSH background) noexcept {
    auto* const dc = reinterpret_cast<HDC>(deviceContext);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, colour(kToolWindowText));
    return reinterpret_cast<LRESULT>(background);
}

void drawButton(const DRAWITEMSTRUCT& item, const ButtonColours& colours) {
    const GdiBrush fill(CreateSolidBrush(colour(colours.fill)));
    const GdiBrush border(CreateSolidBrush(colour(colours.border)));
    FillRect(item.hDC, &item.rcItem, fill.get());
    FrameRect(item.hDC, &item.rcItem, border.get());

    std::array<wchar_t, 32> caption{};
    GetWindowTextW(item.hwndItem, caption.data(), static_cast<int>(caption.size()));
    HGDIOBJ oldFont = SelectObject(
        item.hDC, reinterpret_cast<HGDIOBJ>(SendMessageW(item.hwndItem, WM_GETFONT, 0, 0)));
    SetBkMode(item.hDC, TRANSPARENT);
    SetTextColor(item.hDC, colour(colours.text));
    RECT place = item.rcItem;
    DrawTextW(item.hDC, caption.data(), -1, &place, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    SelectObject(item.hDC, oldFont);
}

void showToolWindow(HWND window) {
    handlePendingSteps(); // showing a window is slow
    ShowWindow(window, IsIconic(window) != 0 ? SW_RESTORE : SW_SHOW);
    handlePendingSteps();
    BringWindowToTop(window); // SetForegroundWindow alone may leave it below its siblings
    SetForegroundWindow(window);
}

void hideToolWindow(HWND window) {
    HWND owner = GetWindow(window, GW_OWNER);
    ShowWindow(window, SW_HIDE);
    handlePendingSteps();                                  // hiding a window is slow, too
    if (owner != nullptr && IsWindowEnabled(owner) != 0) { // disabled while a dialog is open
        SetForegroundWindow(owner);
        SetFocus(owner);
    }
}

} // namespace percussomatic
