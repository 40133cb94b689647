// SPDX-License-Identifier: MIT
// peek CLASS: prints the controls of a window of the program, for the end-to-end tests. One line
// per control, in order of creation: "ID LEFT TOP RIGHT BOTTOM STATE TEXT" in screen pixels. STATE
// is the selected entry of a list, the position of a trackbar or 1 for a checked button; TEXT has
// the entries of a list separated by tabs. Exit code 1 if no such window is visible.

#include <windows.h>

#include <commctrl.h>

#include <cstdio>
#include <string>

namespace {

// The result of a message that fills a buffer, such as WM_GETTEXT.
std::wstring textFrom(HWND control, UINT message, WPARAM parameter) {
    std::wstring text(512, L'\0');
    text.resize(static_cast<std::size_t>(
        SendMessageW(control, message, parameter, reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

std::wstring entriesOf(HWND list) {
    std::wstring entries;
    const auto count = static_cast<WPARAM>(SendMessageW(list, LB_GETCOUNT, 0, 0));
    for (WPARAM i = 0; i < count; ++i) {
        entries += (i > 0 ? L"\t" : L"") + textFrom(list, LB_GETTEXT, i);
    }
    return entries;
}

BOOL CALLBACK printControl(HWND control, LPARAM) {
    wchar_t name[32] = {};
    GetClassNameW(control, name, static_cast<int>(std::size(name)));
    const std::wstring kind(name);
    const bool isList = kind == L"ListBox";
    const UINT stateMessage = isList                    ? LB_GETCURSEL
                              : kind == TRACKBAR_CLASSW ? TBM_GETPOS
                                                        : BM_GETCHECK;
    const LRESULT state = SendMessageW(control, stateMessage, 0, 0);
    RECT rect{};
    GetWindowRect(control, &rect);
    const std::wstring text = isList ? entriesOf(control) : textFrom(control, WM_GETTEXT, 512);
    char utf8[2048] = {};
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, utf8, sizeof(utf8) - 1, nullptr, nullptr);
    std::printf("%d %ld %ld %ld %ld %d %s\n", GetDlgCtrlID(control), rect.left, rect.top,
                rect.right, rect.bottom, static_cast<int>(state), utf8);
    return TRUE;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    SetProcessDPIAware(); // or places are told in the pixels of a coarser display
    HWND window = argc == 2 ? FindWindowW(argv[1], nullptr) : nullptr;
    if (window == nullptr || IsWindowVisible(window) == 0) {
        return 1;
    }
    EnumChildWindows(window, printControl, 0);
    return 0;
}
