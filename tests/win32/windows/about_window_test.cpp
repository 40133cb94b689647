// SPDX-License-Identifier: MIT
#include "win32/windows/about_window.h"

#include "win32/windows/owner_window.h"

#include <filesystem>

namespace percussomatic {
namespace {

TEST(AboutWindow, NoTextIsCutOffAtAnyDpi) {
    const OwnerWindow owner;
    const int owned = ownedObjects;
    for (const int dpi : {96, 144, 192}) {
        displayDpi() = dpi;
        showAboutWindow(owner.handle);
        HWND window = GetActiveWindow();
        ASSERT_TRUE(IsWindowVisible(window));
        int lines = 0;
        for (HWND line = GetWindow(window, GW_CHILD); line != nullptr;
             line = GetWindow(line, GW_HWNDNEXT)) {
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
            EXPECT_LE(needed.bottom, place.bottom) << dpi << std::filesystem::path(text).string();
            ++lines;
        }
        EXPECT_EQ(lines, 41);
        destroyAboutWindow();
        EXPECT_EQ(ownedObjects, owned);
    }
    displayDpi() = kDesignDpi;
}

} // namespace
} // namespace percussomatic
