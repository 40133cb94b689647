#include "win32/windows/effects_window.h"

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "panel/display_scale.h"
#include "win32/windows/owner_window.h"
#include "win32/windows/tool_window.h"

#include <gtest/gtest.h>

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
        displayDpi() = kDesignDpi;
    }

    HWND show() const {
        showEffectsWindow(owner_);
        return ownedWindow(owner_, L"PercussomaticEffectsWindow");
    }

    OwnerWindow own_;
    HWND owner_ = own_.handle;
    int owned_ = ownedObjects;
};

struct Written {
    const wchar_t* text; // none for a trackbar
    int id;
    WrittenPlace place;
    int fontPixels, weight;
};

// One of each kind, in both columns.
constexpr Written kWritten[] = {
    {L"PERCUSOMATIC  /  EFFECTS", 0, {22, 14, 430, 30}, 24, 700},
    {L"ENABLE EFFECT", kEnable, {535, 15, 145, 26}, 16, 600},
    {L"STADIUM", kPreset + 3, {520, 56, 152, 38}, 16, 600},
    {L"REVERB PARAMETERS", 0, {22, 458, 260, 22}, 16, 600},
    {L"Triangle", 0, {357, 146, 125, 20}, 14, 400},
    {L"Stereo Width", 0, {22, 612, 115, 20}, 14, 400},
    {nullptr, 2005, {148, 391, 180, 30}, 0, 0},
    {nullptr, 2114, {473, 487, 190, 30}, 0, 0},
    {nullptr, 2115, {473, 527, 190, 30}, 0, 0}, // not shown
};

TEST_F(EffectsWindow, LooksAsWrittenAtEveryDisplaySetting) {
    for (const int dpi : {96, 144, 192}) {
        displayDpi() = dpi;
        HWND window = show();
        expectPlace(owner_, window, {40, 45, 720, 735});
        EXPECT_EQ(GetWindowLongW(window, GWL_STYLE) & ~WS_CLIPSIBLINGS,
                  WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_VISIBLE);
        EXPECT_TRUE(GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOOLWINDOW);
        for (const Written& written : kWritten) {
            const bool bar = written.text == nullptr;
            HWND control = bar ? GetDlgItem(window, written.id)
                               : FindWindowExW(window, nullptr, nullptr, written.text);
            SCOPED_TRACE(written.place.y);
            expectPlace(window, control, written.place);
            EXPECT_EQ(GetDlgCtrlID(control), written.id);
            EXPECT_EQ(IsWindowVisible(control) != 0, written.id != 2115);
            EXPECT_EQ(SendMessageW(control, TBM_GETRANGEMAX, 0, 0), bar ? 100 : 0);
            LOGFONTW font{};
            GetObjectW(reinterpret_cast<HFONT>(SendMessageW(control, WM_GETFONT, 0, 0)),
                       sizeof font, &font);
            EXPECT_EQ(-font.lfHeight, written.fontPixels * dpi / 96);
            EXPECT_EQ(font.lfWeight, written.weight);
        }
        DestroyWindow(window);
        EXPECT_EQ(ownedObjects, owned_);
    }
}

TEST_F(EffectsWindow, HandGoesStraightToTheEngine) {
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

// The fill of a button on the screen.
COLORREF fillOf(HWND button) {
    UpdateWindow(button);
    HDC dc = GetDC(button);
    const COLORREF fill = GetPixel(dc, 4, 4);
    ReleaseDC(button, dc);
    return fill;
}

TEST_F(EffectsWindow, FollowsTheChosenPreset) {
    const std::vector<const wchar_t*> texts[] = {
        {L"Room Size", L"Damping", L"Stereo Width"},
        {L"Warm Tone", L"A warm and smooth room designed for vintage electronic drums."},
        {L"Hall Size", L"A large hall with a long tail and an open stereo image."},
        {L"Reverb Tail", L"Vintage Tone", L"Stereo Spread"},
    };
    HWND window = show();
    for (const int preset : {3, 2, 1, 0}) {
        SCOPED_TRACE(preset);
        SendDlgItemMessageW(window, kPreset + preset, BM_CLICK, 0, 0);
        EXPECT_EQ(effectChoice().selectedPreset, preset);
        EXPECT_FALSE(soundEngine().isEffectEnabled());
        for (const wchar_t* text : texts[preset]) {
            EXPECT_NE(FindWindowExW(window, nullptr, L"Static", text), nullptr);
        }
        for (int each = 0; each < 4; ++each) {
            EXPECT_EQ(fillOf(GetDlgItem(window, kPreset + each)),
                      colour(each == preset ? 0xD6912D : 0x413D36));
        }
    }
    selectPreset(1); // as a card does
    refreshEffectsWindow();
    EXPECT_EQ(fillOf(GetDlgItem(window, kPreset + 1)), colour(0xD6912D));
}

TEST_F(EffectsWindow, IsKeptAndShowsWhatHappenedMeanwhile) {
    refreshEffectsWindow();                                     // nothing yet
    showEffectsWindow(reinterpret_cast<HWND>(INT_PTR{0x7FFE})); // no owner, no window
    EXPECT_EQ(ownedObjects, owned_);
    HWND window = show();
    ShowWindow(window, SW_MINIMIZE);
    SendMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(GetFocus(), owner_);
    selectPreset(2); // as a card does
    soundEngine().setEffectEnabled(true);
    EXPECT_EQ(show(), window);
    EXPECT_TRUE(IsWindowVisible(window) && !IsIconic(window));
    for (int id = 2110; const int position : {34, 92, 42, 100, 13}) {
        EXPECT_EQ(SendDlgItemMessageW(window, id++, TBM_GETPOS, 0, 0), position);
    }
    EXPECT_TRUE(IsDlgButtonChecked(window, kEnable));
}

} // namespace
} // namespace percussomatic
