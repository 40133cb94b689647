// SPDX-License-Identifier: MIT
// What the tests of the tool windows and dialogs share.
#pragma once

#include "panel/display_scale.h"
#include "win32/graphics/owned.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <deque>
#include <functional>

namespace percussomatic {

// An owner for the windows under test. Posted actions run in order, in whichever message loop is
// active, so that a test can operate a modal window from that window's own thread.
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

// The owner's window of that class; other programs on the display may have one, too.
inline HWND ownedWindow(HWND owner, const wchar_t* windowClass) {
    HWND found = nullptr;
    do {
        found = FindWindowExW(nullptr, found, windowClass, nullptr);
    } while (found != nullptr && GetWindow(found, GW_OWNER) != owner);
    return found;
}

} // namespace percussomatic
