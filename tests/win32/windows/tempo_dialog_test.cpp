// SPDX-License-Identifier: MIT
#include "win32/windows/tempo_dialog.h"

#include "win32/windows/owner_window.h"

namespace percussomatic {
namespace {

constexpr wchar_t kClass[] = L"PercussomaticBpmEditDialog";
constexpr int kEdit = 3101, kOk = 3102, kCancel = 3103;

// The edit field has the focus and all of its text is selected.
void expectReadyToType(HWND dialog, const wchar_t* text) {
    wchar_t shown[80] = {};
    const UINT length = GetDlgItemTextW(dialog, kEdit, shown, 80);
    EXPECT_STREQ(shown, text);
    EXPECT_EQ(SendDlgItemMessageW(dialog, kEdit, EM_GETSEL, 0, 0), MAKELRESULT(0, length));
    EXPECT_EQ(GetFocus(), GetDlgItem(dialog, kEdit));
}

// Opens the dialog at 118.6 BPM and runs the action in its message loop. Returns 0 on cancel.
template <typename Action>
double run(Action action) {
    const int owned = ownedObjects;
    OwnerWindow owner;
    owner.post([&] {
        EXPECT_FALSE(IsWindowEnabled(owner.handle));
        action(owner, ownedWindow(owner.handle, kClass));
    });
    double bpm = 0.0;
    const bool accepted = runTempoDialog(owner.handle, 118.6, bpm);
    EXPECT_EQ(ownedWindow(owner.handle, kClass), nullptr);
    EXPECT_TRUE(IsWindowEnabled(owner.handle));
    EXPECT_EQ(ownedObjects, owned);
    return accepted ? bpm : 0.0;
}

TEST(TempoDialog, OnlyTheButtonsAcceptATempoOrExplainItsRange) {
    const struct {
        const wchar_t* text;
        double bpm; // 0 if it is rejected
    } kCases[] = {{L"40", 40.0}, {L"240", 240.0}, {L"120.5 ", 120.5}, {L"39", 0.0}, {L"", 0.0}};
    for (const auto& each : kCases) {
        SCOPED_TRACE(each.text);
        const double got = run([&](OwnerWindow& owner, HWND dialog) {
            expectReadyToType(dialog, L"119");
            SetDlgItemTextW(dialog, kEdit, each.text);
            PostMessageW(GetDlgItem(dialog, kEdit), WM_KEYDOWN, VK_RETURN, 0);
            PostMessageW(GetDlgItem(dialog, kEdit), WM_KEYDOWN, VK_ESCAPE, 0);
            owner.post([&each, &owner, dialog] {
                EXPECT_TRUE(IsWindowEnabled(dialog)) << "closed or under a message box";
                owner.post([dialog] { // runs in the message box
                    SendMessageW(ownedWindow(dialog, L"#32770"), WM_COMMAND, IDOK, 0);
                });
                SendDlgItemMessageW(dialog, kOk, BM_CLICK, 0, 0);
                if (each.bpm == 0.0) {
                    expectReadyToType(dialog, each.text);
                    SendDlgItemMessageW(dialog, kCancel, BM_CLICK, 0, 0);
                }
            });
        });
        EXPECT_EQ(got, each.bpm);
    }
}

} // namespace
} // namespace percussomatic
