#include "app/about_window.h"
#include "audio/effects_window.h"
#include "cards/title_dialog.h"
#include "midi/midi_device_window.h"
#include "sequencer/tempo_dialog.h"
#include "shell/owner_window.h"
#include "ui/owned.h"

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

class WindowLife : public testing::Test {
protected:
    WindowLife() { moveOutOfSight(owner_.handle); }

    void TearDown() override {
        DestroyWindow(owner_.handle);
        EXPECT_EQ(ownedObjects, owned_);
        EXPECT_LE(gdiObjects(), gdiObjects_ + kSystemsOwn);
    }

    // What was made once for good is there after the first time.
    void closed(int time) {
        if (time == 0) {
            gdiObjects_ = gdiObjects();
        }
    }

    void openAndClose(const wchar_t* windowClass, void (*run)(HWND owner)) {
        for (int time = 0; time < kTimes; ++time) {
            bool opened = false;
            owner_.post([&] {
                HWND dialog = ownedWindow(owner_.handle, windowClass);
                opened = IsWindowVisible(dialog) != 0;
                SendMessageW(dialog, WM_CLOSE, 0, 0);
            });
            run(owner_.handle);
            ASSERT_TRUE(opened) << time;
            closed(time);
        }
    }

    void showAndHide(const wchar_t* windowClass, void (*show)(HWND owner)) {
        HWND window = nullptr;
        for (int time = 0; time < kTimes; ++time) {
            show(owner_.handle);
            if (window == nullptr) {
                window = ownedWindow(owner_.handle, windowClass);
                moveOutOfSight(window);
            }
            ASSERT_TRUE(IsWindowVisible(window)) << time;
            SendMessageW(window, WM_CLOSE, 0, 0);
            ASSERT_FALSE(IsWindowVisible(window)) << time;
            if (time % kAnewEvery == 0) {
                DestroyWindow(window);
                window = nullptr;
                closed(time);
            }
        }
    }

private:
    static constexpr int kSystemsOwn = 20; // it keeps a few of its own for later

    int owned_ = ownedObjects, gdiObjects_ = 0;
    OwnerWindow owner_;
};

TEST_F(WindowLife, TempoDialog) {
    openAndClose(L"PercussomaticBpmEditDialog", [](HWND owner) {
        double bpm = 0.0;
        runTempoDialog(owner, 120.0, bpm);
    });
}

TEST_F(WindowLife, TitleDialog) {
    openAndClose(L"PunchCardTitleDialog", [](HWND owner) { askCardTitle(owner, L"Rumba"); });
}

TEST_F(WindowLife, EffectsWindow) {
    showAndHide(L"PercussomaticEffectsWindow", showEffectsWindow);
}

TEST_F(WindowLife, AboutWindow) {
    showAndHide(L"PercussomaticAboutWindow", showAboutWindow);
}

TEST_F(WindowLife, MidiDeviceWindow) {
    showAndHide(L"LumivardaMidiDeviceSelectorWindow", showMidiDeviceWindow);
}

} // namespace
} // namespace percussomatic
