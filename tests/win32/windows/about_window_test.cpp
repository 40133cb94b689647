#include "panel/display_scale.h"
#include "win32/graphics/owned.h"
#include "win32/windows/about_window.h"
#include "win32/windows/owner_window.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace percussomatic {
namespace {

TEST(AboutWindow, EveryLineIsWholeAndApartFromTheOthers) {
    const OwnerWindow owner;
    const int owned = ownedObjects;
    for (const int dpi : {96, 144, 192}) {
        displayDpi() = dpi;
        showAboutWindow(owner.handle);
        HWND window = GetActiveWindow();
        ASSERT_TRUE(IsWindowVisible(window));
        RECT client{}, common{};
        GetClientRect(window, &client);
        std::vector<RECT> places;
        for (HWND line = GetWindow(window, GW_CHILD); line != nullptr;
             line = GetWindow(line, GW_HWNDNEXT)) {
            wchar_t text[300];
            GetWindowTextW(line, text, 300);
            SCOPED_TRACE(std::to_string(dpi) + std::filesystem::path(text).string());
            RECT place{};
            GetWindowRect(line, &place);
            MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
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
        destroyAboutWindow();
        EXPECT_EQ(ownedObjects, owned);
    }
    displayDpi() = kDesignDpi;
}

} // namespace
} // namespace percussomatic
