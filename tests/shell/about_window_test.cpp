#include "app/about_window.h"
#include "app/main_window.h"
#include "audio/wave_out.h"
#include "midi/midi_input.h"
#include "midi/settings_file.h"
#include "ui/display_scale.h"
#include "ui/owned.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

namespace percussomatic {
namespace {

class AboutWindow : public testing::Test {
protected:
    void SetUp() override {
        owner_ = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 800, 600, nullptr, nullptr,
                                 nullptr, nullptr);
        show();
    }
    void TearDown() override {
        destroyAboutWindow();
        DestroyWindow(owner_);
        EXPECT_EQ(ownedObjects, ownedBefore_);
        displayDpi() = kWrittenDpi;
        midiInputContext().deviceName.clear();
        waveOut().lateBuffers = 0;
        layoutScale() = 1.0;
    }
    void show() {
        showAboutWindow(owner_);
        window_ = GetActiveWindow();
        EXPECT_TRUE(IsWindowVisible(window_));
    }
    bool tells(const std::wstring& text) const {
        return FindWindowExW(window_, nullptr, L"STATIC", text.c_str()) != nullptr;
    }

    int ownedBefore_ = ownedObjects;
    HWND owner_ = nullptr, window_ = nullptr;
};

TEST_F(AboutWindow, TellsWhatIsTrueWheneverItIsShown) {
    EXPECT_TRUE(tells(L"48000 Hz, 4 \u00D7 512 frames, 42.7 ms"));
    EXPECT_TRUE(tells((std::filesystem::current_path() / "PunchCards").wstring()));
    EXPECT_TRUE(tells(settingsFile().wstring()));
    EXPECT_TRUE(tells(L"none connected"));
    midiInputContext().deviceName = L"Keys & Pads";
    waveOut().lateBuffers = 7;
    layoutScale() = 0.45;
    show();
    EXPECT_TRUE(tells(L"Keys & Pads"));
    EXPECT_TRUE(tells(L"7 since the start"));
    EXPECT_TRUE(tells(L"0.45 of what fits the screen"));
}

TEST_F(AboutWindow, FollowsWhileItIsSeenAndRestsWhileHidden) {
    midiInputContext().deviceName = L"Keys";
    for (MSG message{}; !tells(L"Keys") && GetMessageW(&message, nullptr, 0, 0) > 0;) {
        DispatchMessageW(&message);
    }
    constexpr UINT kWaysToClose[] = {WM_KEYDOWN, WM_CLOSE};
    for (const UINT message : kWaysToClose) {
        SendMessageW(window_, message, message == WM_KEYDOWN ? VK_ESCAPE : 0, 0);
        EXPECT_FALSE(IsWindowVisible(window_));
        EXPECT_FALSE(KillTimer(window_, 1)) << "works while nobody looks";
        show();
    }
    EXPECT_TRUE(KillTimer(window_, 1));
}

TEST_F(AboutWindow, EveryLineIsWholeAndApartFromTheOthers) {
    for (const int dpi : {96, 144, 192}) {
        destroyAboutWindow();
        displayDpi() = dpi;
        show();
        RECT client{}, common{};
        GetClientRect(window_, &client);
        std::vector<RECT> places;
        for (HWND line = GetWindow(window_, GW_CHILD); line != nullptr;
             line = GetWindow(line, GW_HWNDNEXT)) {
            wchar_t text[300];
            GetWindowTextW(line, text, 300);
            SCOPED_TRACE(std::to_string(dpi) + std::filesystem::path(text).string());
            RECT place{};
            GetWindowRect(line, &place);
            MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&place), 2);
            UnionRect(&common, &client, &place);
            EXPECT_TRUE(EqualRect(&common, &client));
            for (const RECT& other : places) {
                EXPECT_FALSE(IntersectRect(&common, &place, &other));
            }
            places.push_back(place);

            const bool path = (GetWindowLongW(line, GWL_STYLE) & SS_PATHELLIPSIS) != 0;
            HDC dc = GetDC(line);
            SelectObject(dc, reinterpret_cast<HGDIOBJ>(SendMessageW(line, WM_GETFONT, 0, 0)));
            RECT needed{0, 0, place.right - place.left, 0};
            DrawTextW(dc, text, -1, &needed,
                      DT_CALCRECT | DT_NOPREFIX | (path ? DT_SINGLELINE : DT_WORDBREAK));
            ReleaseDC(line, dc);
            EXPECT_LE(needed.bottom, place.bottom - place.top);
        }
        EXPECT_EQ(places.size(), 41U);
    }
}

TEST_F(AboutWindow, GoesWithItsOwnerAndComesAgainWithTheNext) {
    EXPECT_GT(ownedObjects, ownedBefore_);
    DestroyWindow(owner_);
    EXPECT_EQ(ownedObjects, ownedBefore_);
    SetUp();
}

} // namespace
} // namespace percussomatic
