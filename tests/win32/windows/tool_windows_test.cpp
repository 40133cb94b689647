// SPDX-License-Identifier: MIT
// What holds for every tool window and dialog.

#include "win32/windows/about_window.h"
#include "win32/windows/effects_window.h"
#include "win32/windows/midi_device_window.h"
#include "win32/windows/owner_window.h"
#include "win32/windows/tempo_dialog.h"
#include "win32/windows/title_dialog.h"

#include <filesystem>
#include <vector>

namespace percussomatic {
namespace {

RECT screenRect(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return rect;
}

bool isInside(const RECT& inner, const RECT& outer) {
    RECT both{};
    UnionRect(&both, &inner, &outer);
    return EqualRect(&both, &outer) != 0;
}

void expectTextFits(HWND line) {
    wchar_t text[300];
    GetWindowTextW(line, text, 300);
    RECT place{};
    GetClientRect(line, &place);
    const bool path = (GetWindowLongW(line, GWL_STYLE) & SS_PATHELLIPSIS) != 0;
    HDC dc = GetDC(line);
    SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(line, WM_GETFONT, 0, 0)));
    RECT needed{0, 0, place.right, 0};
    DrawTextW(dc, text, -1, &needed,
              DT_CALCRECT | DT_NOPREFIX | (path ? DT_SINGLELINE : DT_WORDBREAK));
    ReleaseDC(line, dc);
    EXPECT_LE(needed.bottom, place.bottom) << std::filesystem::path(text).string();
}

void expectControlsFit(HWND window) {
    RECT client{}, both{};
    GetClientRect(window, &client);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    std::vector<RECT> earlier;
    for (HWND child = GetWindow(window, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        if (IsWindowVisible(child) == 0) {
            continue;
        }
        const RECT rect = screenRect(child);
        const std::size_t index = earlier.size();
        EXPECT_TRUE(isInside(rect, client)) << index;
        for (const RECT& other : earlier) {
            EXPECT_FALSE(IntersectRect(&both, &rect, &other)) << index;
        }
        earlier.push_back(rect);
        wchar_t kind[20];
        GetClassNameW(child, kind, 20);
        if (std::wstring(kind) == L"Static") {
            expectTextFits(child);
        }
    }
    EXPECT_GE(earlier.size(), 4u);
}

TEST(ToolWindows, FitTheScreenWithAllControlsAtAnyDpi) {
    const struct {
        const wchar_t* windowClass;
        void (*open)(HWND owner);
        int width, height; // at 96 DPI; 0 if they follow from the content
    } kWindows[] = {
        {L"PercussomaticAboutWindow", showAboutWindow, 0, 0},
        {L"PercussomaticEffectsWindow", showEffectsWindow, 720, 735},
        {L"LumivardaMidiDeviceSelectorWindow", showMidiDeviceWindow, 470, 515},
        {L"PunchCardTitleDialog", [](HWND owner) { askCardTitle(owner, L"Rumba"); }, 414, 170},
        {L"PercussomaticBpmEditDialog",
         [](HWND owner) {
             double bpm = 0.0;
             runTempoDialog(owner, 120.0, bpm);
         },
         324, 210},
    };
    RECT work{};
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    for (const auto& each : kWindows) {
        for (const int dpi : {96, 144, 192, 288}) {
            displayDpi() = dpi;
            SCOPED_TRACE(std::filesystem::path(each.windowClass).string() + std::to_string(dpi));
            OwnerWindow owner;
            SetWindowPos(owner.handle, nullptr, work.right - 900, work.bottom - 300, 0, 0,
                         SWP_NOSIZE);
            owner.post([&] { // in the dialog's message loop, or below
                HWND window = ownedWindow(owner.handle, each.windowClass);
                const RECT place = screenRect(window);
                EXPECT_TRUE(isInside(place, work))
                    << place.left << ' ' << place.top << ' ' << place.right << ' ' << place.bottom;
                if (dpi == kDesignDpi && each.width > 0) {
                    EXPECT_EQ(place.right - place.left, each.width);
                    EXPECT_EQ(place.bottom - place.top, each.height);
                }
                expectControlsFit(window);
                SendMessageW(window, WM_CLOSE, 0, 0);
            });
            each.open(owner.handle);
            MSG message{};
            while (PeekMessageW(&message, owner.handle, WM_APP, WM_APP, PM_REMOVE) != 0) {
                DispatchMessageW(&message);
            }
        }
    }
    displayDpi() = kDesignDpi;
}

} // namespace
} // namespace percussomatic
