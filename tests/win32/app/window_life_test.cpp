// SPDX-License-Identifier: MIT
// Opens and closes every tool window and dialog hundreds of times and counts what is not released.

#include "win32/windows/about_window.h"
#include "win32/windows/effects_window.h"
#include "win32/windows/midi_device_window.h"
#include "win32/windows/owner_window.h"
#include "win32/windows/tempo_dialog.h"
#include "win32/windows/title_dialog.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace percussomatic {
namespace {

// The number of GDI objects in use. Wine does not report it, but the low word of a handle is its
// index in the process's table, so new objects fill the gaps and then show the size of the table.
int gdiObjects() {
    std::vector<HBRUSH> brushes(1000);
    int highest = 0;
    for (HBRUSH& brush : brushes) {
        brush = CreateSolidBrush(0);
        highest = std::max<int>(highest, LOWORD(brush));
    }
    for (HBRUSH brush : brushes) {
        DeleteObject(brush);
    }
    return highest;
}

void moveOffScreen(HWND window) { // painting would take most of the time
    SetWindowPos(window, nullptr, -4000, -4000, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void expectNoLeak(const wchar_t* windowClass, void (*open)(HWND)) {
    constexpr int kCachedBySystem = 20;
    const int owned = ownedObjects;
    OwnerWindow owner;
    SCOPED_TRACE(std::filesystem::path(windowClass).string());
    moveOffScreen(owner.handle);
    int atFirst = 0;
    for (int time = 0; time < 300 && !testing::Test::HasFailure(); ++time) {
        bool closed = false;
        owner.post([&] {
            HWND window = ownedWindow(owner.handle, windowClass);
            closed = IsWindowVisible(window) != 0;
            moveOffScreen(window);
            SendMessageW(window, WM_CLOSE, 0, 0);
        });
        open(owner.handle); // runs the posted action if it opens a dialog
        MSG message{};
        while (PeekMessageW(&message, owner.handle, WM_APP, WM_APP, PM_REMOVE) != 0) {
            DispatchMessageW(&message);
        }
        EXPECT_TRUE(closed);
        HWND hidden = ownedWindow(owner.handle, windowClass); // null if it was a dialog
        EXPECT_FALSE(IsWindowVisible(hidden));
        if (time % 10 == 0) {
            DestroyWindow(hidden);
        }
        atFirst = time == 0 ? gdiObjects() : atFirst; // after one-time initialisation
    }
    DestroyWindow(owner.handle);
    EXPECT_EQ(ownedObjects, owned);
    EXPECT_LE(gdiObjects(), atFirst + kCachedBySystem);
}

TEST(WindowLife, DialogsLeakNothing) {
    expectNoLeak(L"PercussomaticBpmEditDialog", [](HWND owner) {
        double bpm = 0.0;
        runTempoDialog(owner, 120.0, bpm);
    });
    expectNoLeak(L"PunchCardTitleDialog", [](HWND owner) { askCardTitle(owner, L"Rumba"); });
}

TEST(WindowLife, ToolWindowsLeakNothing) {
    expectNoLeak(L"PercussomaticEffectsWindow", showEffectsWindow);
    expectNoLeak(L"PercussomaticAboutWindow", showAboutWindow);
    expectNoLeak(L"LumivardaMidiDeviceSelectorWindow", showMidiDeviceWindow);
}

} // namespace
} // namespace percussomatic
