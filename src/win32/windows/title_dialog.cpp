// SPDX-License-Identifier: MIT
#include "win32/windows/title_dialog.h"

#include "panel/display_scale.h"
#include "win32/windows/message_loop.h"
#include "win32/windows/tool_window.h"

#include <array>

namespace percussomatic {

namespace {

constexpr wchar_t kClass[] = L"PunchCardTitleDialog";
constexpr WindowDesign kDesign{{414, 170}, {378, 122}};
constexpr int kEditId = 2001, kOkId = 2002, kCancelId = 2003;
constexpr WPARAM kMaxTypedCharacters = 32;
constexpr int kMaxReadCharacters = 128;

struct TitleDialog {
    const std::wstring& title;
    HWND edit = nullptr;
    bool done = false;
    std::optional<std::wstring> entered;
};

constexpr ControlDefinition kControls[] = {
    {L"STATIC", L"Punch Card title:", 18, 18, 330, 22},
    {L"EDIT", L"", 18, 46, 360, 28, kEditId, WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE},
    {L"BUTTON", L"OK", 98, 92, 92, 30, kOkId, WS_TABSTOP | BS_DEFPUSHBUTTON},
    {L"BUTTON", L"CANCEL", 208, 92, 92, 30, kCancelId, WS_TABSTOP | BS_PUSHBUTTON},
};

void createControls(HWND window, TitleDialog& dialog) {
    const int dpi = fitToWorkArea(window, kDesign);
    for (const ControlDefinition& each : kControls) {
        addControl(window, each, controlFont(dpi), dpi);
    }
    dialog.edit = GetDlgItem(window, kEditId);
    SendMessageW(dialog.edit, EM_SETLIMITTEXT, kMaxTypedCharacters, 0);
    SetWindowTextW(dialog.edit, dialog.title.c_str());
    SendMessageW(dialog.edit, EM_SETSEL, 0, -1);
}

std::wstring textOf(HWND edit) {
    std::array<wchar_t, kMaxReadCharacters + 1> text{};
    const int length = GetWindowTextW(edit, text.data(), static_cast<int>(text.size()));
    return {text.data(), text.data() + length};
}

// Enter and Escape arrive as IDOK and IDCANCEL, although the buttons have other ids.
void command(TitleDialog& dialog, int id) {
    if (id == kOkId || id == IDOK) {
        dialog.entered = textOf(dialog.edit);
        dialog.done = true;
    } else if (id == kCancelId || id == IDCANCEL) {
        dialog.done = true;
    }
}

LRESULT CALLBACK dialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        auto* dialog =
            static_cast<TitleDialog*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(dialog));
        createControls(window, *dialog);
        return 0;
    }
    auto* dialog = reinterpret_cast<TitleDialog*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (dialog == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (message) {
    case WM_COMMAND:
        command(*dialog, LOWORD(wParam));
        return 0;
    case WM_CLOSE:
    case WM_DESTROY:
        dialog->done = true;
        return 0;
    case WM_CTLCOLORSTATIC: // the label in the window's background colour
        return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
    case WM_SETFOCUS:
        SetFocus(dialog->edit);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

} // namespace

std::optional<std::wstring> askCardTitle(HWND owner, const std::wstring& title) {
    registerToolWindowClass(kClass, dialogProc, GetSysColorBrush(COLOR_WINDOW));
    TitleDialog dialog{.title = title, .edit = nullptr, .done = false, .entered = std::nullopt};
    const int width = scaledForDpi(kDesign.outer.width);
    const int height = scaledForDpi(kDesign.outer.height);
    const POINT corner = centredOver(owner, width, height);
    HWND window =
        CreateWindowExW(WS_EX_DLGMODALFRAME | WS_EX_TOOLWINDOW, kClass, L"Punch Card Title",
                        WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_VISIBLE, corner.x, corner.y, width,
                        height, owner, nullptr, GetModuleHandleW(nullptr), &dialog);
    if (window == nullptr) {
        return std::nullopt;
    }
    SetFocus(dialog.edit);
    runModal(window, owner, dialog.done);
    return dialog.entered;
}

} // namespace percussomatic
