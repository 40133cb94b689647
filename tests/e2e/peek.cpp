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

std::wstring textOf(HWND control) {
    std::wstring text(static_cast<std::size_t>(SendMessageW(control, WM_GETTEXTLENGTH, 0, 0)) + 1,
                      L'\0');
    text.resize(static_cast<std::size_t>(
        SendMessageW(control, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

std::wstring entriesOf(HWND list) {
    std::wstring entries;
    const LRESULT count = SendMessageW(list, LB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        std::wstring entry(256, L'\0');
        entry.resize(static_cast<std::size_t>(SendMessageW(
            list, LB_GETTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(entry.data()))));
        entries += (i > 0 ? L"\t" : L"") + entry;
    }
    return entries;
}

std::string utf8(const std::wstring& text) {
    std::string bytes(text.size() * 3, '\0');
    bytes.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
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
    std::printf("%d %ld %ld %ld %ld %d %s\n", GetDlgCtrlID(control), rect.left, rect.top,
                rect.right, rect.bottom, static_cast<int>(state),
                utf8(isList ? entriesOf(control) : textOf(control)).c_str());
    return TRUE;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    HWND window = argc == 2 ? FindWindowW(argv[1], nullptr) : nullptr;
    if (window == nullptr || IsWindowVisible(window) == 0) {
        return 1;
    }
    EnumChildWindows(window, printControl, 0);
    return 0;
}
