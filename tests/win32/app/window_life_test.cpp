#include "win32/graphics/owned.h"
#include "win32/windows/about_window.h"
#include "win32/windows/effects_window.h"
#include "win32/windows/midi_device_window.h"
#include "win32/windows/owner_window.h"
#include "win32/windows/tempo_dialog.h"
#include "win32/windows/title_dialog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace percussomatic {
namespace {

constexpr int kTimes = 5000;
constexpr int kAnewEvery = 10;     // a window that is kept is destroyed so often
constexpr int kOutOfSight = -4000; // pixels; painting would take most of the time

// All that the process has, counted or not: a handle's low word is its place in the process's
// table, and once the gaps are filled the highest place tells how many there are.
int gdiObjects() {
    std::vector<HBRUSH> filling(1000);
    int highest = 0;
    for (HBRUSH& each : filling) {
        each = CreateSolidBrush(0);
        highest = std::max<int>(highest, LOWORD(each));
    }
    for (HBRUSH each : filling) {
        DeleteObject(each);
    }
    return highest;
}

void moveOutOfSight(HWND window) {
    SetWindowPos(window, nullptr, kOutOfSight, kOutOfSight, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

enum class Kind { modal, kept };

void openAndClose(OwnerWindow& owner, const wchar_t* windowClass, void (*open)(HWND), Kind kind,
                  bool forGood) {
    bool opened = false;
    const auto close = [&] {
        HWND window = ownedWindow(owner.handle, windowClass);
        opened = IsWindowVisible(window) != 0;
        moveOutOfSight(window);
        SendMessageW(window, WM_CLOSE, 0, 0);
        if (kind == Kind::kept) {
            EXPECT_FALSE(IsWindowVisible(window));
            if (forGood) {
                DestroyWindow(window);
            }
        }
    };
    if (kind == Kind::modal) {
        owner.post(close);
    }
    open(owner.handle);
    if (kind == Kind::kept) {
        close();
    }
    ASSERT_TRUE(opened);
}

void expectNothingLeft(const wchar_t* windowClass, void (*open)(HWND), Kind kind) {
    constexpr int kSystemsOwn = 20; // objects that it keeps for later
    const int owned = ownedObjects;
    OwnerWindow owner;
    moveOutOfSight(owner.handle);
    int atFirst = 0;
    for (int time = 0; time < kTimes && !testing::Test::HasFailure(); ++time) {
        openAndClose(owner, windowClass, open, kind, time % kAnewEvery == 0);
        if (time == 0) { // what is made once for good is there
            atFirst = gdiObjects();
        }
    }
    DestroyWindow(owner.handle);
    EXPECT_EQ(ownedObjects, owned);
    EXPECT_LE(gdiObjects(), atFirst + kSystemsOwn);
}

TEST(WindowLife, TempoDialog) {
    const auto open = [](HWND owner) {
        double bpm = 0.0;
        runTempoDialog(owner, 120.0, bpm);
    };
    expectNothingLeft(L"PercussomaticBpmEditDialog", open, Kind::modal);
}

TEST(WindowLife, TitleDialog) {
    const auto open = [](HWND owner) { askCardTitle(owner, L"Rumba"); };
    expectNothingLeft(L"PunchCardTitleDialog", open, Kind::modal);
}

TEST(WindowLife, EffectsWindow) {
    expectNothingLeft(L"PercussomaticEffectsWindow", showEffectsWindow, Kind::kept);
}

TEST(WindowLife, AboutWindow) {
    expectNothingLeft(L"PercussomaticAboutWindow", showAboutWindow, Kind::kept);
}

TEST(WindowLife, MidiDeviceWindow) {
    expectNothingLeft(L"LumivardaMidiDeviceSelectorWindow", showMidiDeviceWindow, Kind::kept);
}

} // namespace
} // namespace percussomatic
