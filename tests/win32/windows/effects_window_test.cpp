// SPDX-License-Identifier: MIT
#include "win32/windows/effects_window.h"

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "win32/windows/owner_window.h"
#include "win32/windows/tool_window.h"

#include <commctrl.h>

namespace percussomatic {
namespace {

constexpr int kEnable = 2100, kPreset = 2120;

class EffectsWindow : public testing::Test {
protected:
    void SetUp() override {
        selectPreset(0);
        soundEngine().setEffectEnabled(false);
    }
    void TearDown() override {
        DestroyWindow(owner_);
        EXPECT_EQ(ownedObjects, owned_);
    }

    HWND show() const {
        showEffectsWindow(owner_);
        return ownedWindow(owner_, L"PercussomaticEffectsWindow");
    }

    OwnerWindow own_;
    HWND owner_ = own_.handle;
    int owned_ = ownedObjects;
};

TEST_F(EffectsWindow, ControlsSetTheEngine) {
    HWND window = show();
    for (const int id : {2000, 2011, 2110, 2111, 2112, 2113, 2114, 2117}) {
        for (const auto& [key, position] : {std::pair{VK_END, 100}, {VK_LEFT, 99}, {VK_HOME, 0}}) {
            SendDlgItemMessageW(window, id, WM_KEYDOWN, static_cast<WPARAM>(key), 0);
            EXPECT_EQ(barPosition(soundEngine(), id), position) << id;
        }
    }
    for (const bool on : {true, false}) {
        SendDlgItemMessageW(window, kEnable, BM_CLICK, 0, 0);
        EXPECT_EQ(soundEngine().isEffectEnabled(), on);
    }
}

COLORREF fillOf(HWND button) {
    UpdateWindow(button);
    HDC dc = GetDC(button);
    const COLORREF fill = GetPixel(dc, 4, 4);
    ReleaseDC(button, dc);
    return fill;
}

TEST_F(EffectsWindow, ShowsTheSelectedPreset) {
    const wchar_t* const kTexts[] = {
        L"Room Size", L"A warm and smooth room designed for vintage electronic drums.",
        L"A large hall with a long tail and an open stereo image.", L"Stereo Spread"};
    HWND window = show();
    for (const int preset : {3, 2, 1, 0}) {
        SCOPED_TRACE(preset);
        SendDlgItemMessageW(window, kPreset + preset, BM_CLICK, 0, 0);
        EXPECT_EQ(effectChoice().selectedPreset, preset);
        EXPECT_FALSE(soundEngine().isEffectEnabled());
        EXPECT_NE(FindWindowExW(window, nullptr, L"Static", kTexts[preset]), nullptr);
        for (int each = 0; each < 4; ++each) {
            EXPECT_EQ(fillOf(GetDlgItem(window, kPreset + each)),
                      colour(each == preset ? 0xD6912D : 0x413D36));
        }
    }
}

TEST_F(EffectsWindow, IsReusedAndShowsChangesMadeWhileHidden) {
    refreshEffectsWindow();                                     // no-op: it does not exist yet
    showEffectsWindow(reinterpret_cast<HWND>(INT_PTR{0x7FFE})); // fails: no such owner
    EXPECT_EQ(ownedObjects, owned_);
    HWND window = show();
    ShowWindow(window, SW_MINIMIZE);
    SendMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(GetFocus(), owner_);
    selectPreset(2); // as loading a card does
    soundEngine().setEffectEnabled(true);
    EXPECT_EQ(show(), window);
    EXPECT_TRUE(IsWindowVisible(window) && !IsIconic(window));
    for (int id = 2110; const int position : {34, 92, 42, 100, 13}) {
        EXPECT_EQ(SendDlgItemMessageW(window, id++, TBM_GETPOS, 0, 0), position);
    }
    EXPECT_TRUE(IsDlgButtonChecked(window, kEnable));
    EXPECT_EQ(fillOf(GetDlgItem(window, kPreset + 2)), colour(0xD6912D));
}

} // namespace
} // namespace percussomatic
