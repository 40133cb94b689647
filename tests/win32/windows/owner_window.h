#pragma once

#include "panel/display_scale.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <deque>
#include <functional>

namespace percussomatic {

// An owner for the windows under test. What is posted to it runs in whatever message loop turns
// next, so that a test acts on a modal window from that window's own thread and in a fixed order.
struct OwnerWindow {
    HWND handle = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 200, 150, 701, 401,
                                  nullptr, nullptr, nullptr, nullptr);

    OwnerWindow() {
        SetWindowLongPtrW(handle, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        SetWindowLongPtrW(handle, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure));
    }
    ~OwnerWindow() { DestroyWindow(handle); }
    OwnerWindow(const OwnerWindow&) = delete;
    OwnerWindow& operator=(const OwnerWindow&) = delete;

    void post(std::function<void()> action) {
        actions_.push_back(std::move(action));
        PostMessageW(handle, WM_APP, 0, 0);
    }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        auto* owner = reinterpret_cast<OwnerWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (message != WM_APP) {
            return DefWindowProcW(window, message, wParam, lParam);
        }
        const std::function<void()> action = std::move(owner->actions_.front());
        owner->actions_.pop_front();
        action();
        return 0;
    }

    std::deque<std::function<void()>> actions_;
};

// A window of that class that the owner has: other programs on the display may show the same.
inline HWND ownedWindow(HWND owner, const wchar_t* windowClass) {
    HWND found = nullptr;
    do {
        found = FindWindowExW(nullptr, found, windowClass, nullptr);
    } while (found != nullptr && GetWindow(found, GW_OWNER) != owner);
    return found;
}

struct WrittenPlace {
    int x, y, width, height; // pixels at 96 DPI
};

// A window in the client area of another, in the display's size.
inline void expectPlace(HWND origin, HWND placed, const WrittenPlace& written) {
    RECT place{};
    GetWindowRect(placed, &place);
    MapWindowPoints(nullptr, origin, reinterpret_cast<POINT*>(&place), 2);
    const auto scaled = [](int pixels) { return (pixels * displayDpi() + 48) / 96; };
    EXPECT_EQ(place.left, scaled(written.x));
    EXPECT_EQ(place.top, scaled(written.y));
    EXPECT_EQ(place.right - place.left, scaled(written.width));
    EXPECT_EQ(place.bottom - place.top, // the system makes no window higher than the screen
              std::min(scaled(written.height), GetSystemMetrics(SM_CYMAXTRACK)));
}

} // namespace percussomatic
