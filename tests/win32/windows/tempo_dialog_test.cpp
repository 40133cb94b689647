#include "win32/windows/tempo_dialog.h"

#include "win32/graphics/owned.h"
#include "win32/windows/owner_window.h"

#include <gtest/gtest.h>

namespace percussomatic {
namespace {

constexpr wchar_t kClass[] = L"PercussomaticBpmEditDialog";
constexpr int kEdit = 3101, kOk = 3102, kCancel = 3103;

void click(HWND dialog, int button) {
    SendMessageW(GetDlgItem(dialog, button), BM_CLICK, 0, 0);
}

// With the keyboard in the edit field and all its text selected, typing replaces it.
void expectReadyToType(HWND dialog, const wchar_t* text) {
    wchar_t shown[80] = {};
    const UINT length = GetDlgItemTextW(dialog, kEdit, shown, 80);
    EXPECT_STREQ(shown, text);
    EXPECT_EQ(SendDlgItemMessageW(dialog, kEdit, EM_GETSEL, 0, 0), MAKELRESULT(0, length));
    EXPECT_EQ(GetFocus(), GetDlgItem(dialog, kEdit));
}

// Opens the dialog at 118.6 BPM and acts within its loop; 0 when no tempo was accepted.
template <typename Action>
double run(Action action) {
    const int owned = ownedObjects;
    OwnerWindow owner;
    bool modal = false;
    owner.post([&] {
        modal = IsWindowEnabled(owner.handle) == 0;
        action(owner, ownedWindow(owner.handle, kClass));
    });
    double bpm = 0.0;
    const bool accepted = runTempoDialog(owner.handle, 118.6, bpm);
    EXPECT_TRUE(modal);
    EXPECT_EQ(ownedWindow(owner.handle, kClass), nullptr);
    EXPECT_EQ(IsWindowEnabled(owner.handle), IsWindow(owner.handle));
    EXPECT_EQ(ownedObjects, owned);
    return accepted ? bpm : 0.0;
}

TEST(TempoDialog, HasItsControlsInTheSizeOfTheDisplay) {
    constexpr WrittenPlace kPlaces[] = {{20, 17, 250, 24},
                                        {20, 43, 250, 20},
                                        {20, 70, 264, 32},
                                        {46, 120, 92, 32},
                                        {166, 120, 92, 32}};
    for (const int dpi : {96, 144, 192}) {
        displayDpi() = dpi;
        run([&](OwnerWindow&, HWND dialog) {
            expectReadyToType(dialog, L"119");
            HWND control = GetWindow(dialog, GW_CHILD);
            for (const WrittenPlace& place : kPlaces) {
                expectPlace(dialog, control, place);
                control = GetWindow(control, GW_HWNDNEXT);
            }
            EXPECT_EQ(control, nullptr);
            click(dialog, kCancel);
        });
    }
    displayDpi() = kDesignDpi;
}

TEST(TempoDialog, TakesATempoOrSaysWhyNotByItsButtonsAndNoKey) {
    const struct {
        const wchar_t* text;
        double bpm; // 0 if it is refused
    } kCases[] = {{L"40", 40.0}, {L"240", 240.0}, {L"120.5 ", 120.5}, {L"39", 0.0}, {L"", 0.0}};
    for (const auto& each : kCases) {
        SCOPED_TRACE(each.text);
        const double got = run([&each](OwnerWindow& owner, HWND dialog) {
            SetDlgItemTextW(dialog, kEdit, each.text);
            PostMessageW(GetDlgItem(dialog, kEdit), WM_KEYDOWN, VK_RETURN, 0);
            PostMessageW(GetDlgItem(dialog, kEdit), WM_KEYDOWN, VK_ESCAPE, 0);
            owner.post([&each, &owner, dialog] {
                EXPECT_TRUE(IsWindowEnabled(dialog)) << "gone or under a message";
                owner.post([dialog] { // when the message is open
                    SendMessageW(ownedWindow(dialog, L"#32770"), WM_COMMAND, IDOK, 0);
                });
                click(dialog, kOk);
                if (each.bpm == 0.0) {
                    expectReadyToType(dialog, each.text);
                    SendMessageW(dialog, WM_SYSCOMMAND, SC_CLOSE, 0);
                }
            });
        });
        EXPECT_EQ(got, each.bpm);
    }
}

} // namespace
} // namespace percussomatic
