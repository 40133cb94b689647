// SPDX-License-Identifier: MIT
#include "win32/windows/tempo_dialog.h"

#include "panel/display_scale.h"
#include "sequencer/tempo_text.h"
#include "win32/windows/message_loop.h"
#include "win32/windows/tool_window.h"

#include <array>
#include <cwchar>
#include <optional>
#include <string>

namespace percussomatic {

namespace {

constexpr wchar_t kClass[] = L"PercussomaticBpmEditDialog";
constexpr WindowDesign kDesign{{324, 210}, {284, 152}};
constexpr int kEditId = 3101, kOkId = 3102, kCancelId = 3103;
constexpr WPARAM kMaxTypedCharacters = 6;
constexpr int kMaxReadCharacters = 64;

constexpr std::uint32_t kEditFill = 0x2A2824, kEditText = 0xF5EBD2;
constexpr std::uint32_t kPressedFill = 0x534C3F;
constexpr ButtonColours kButton = {0x413D36, 0xD6912D, 0xE8DDC1};

// Lives on the stack of runTempoDialog() while the window is open.
struct TempoDialog {
    double initialBpm = 0.0;
    std::optional<double> acceptedBpm;
    bool done = false;
    HWND edit = nullptr;
    GdiBrush background{CreateSolidBrush(colour(kToolWindowFill))};
    GdiBrush editFill{CreateSolidBrush(colour(kEditFill))};
    GdiFont large, small;
};

struct TempoControl {
    ControlDefinition place;
    GdiFont TempoDialog::*font;
};

constexpr TempoControl kControls[] = {
    {{L"STATIC", L"ENTER TEMPO BPM", 20, 17, 250, 24}, &TempoDialog::large},
    {{L"STATIC", L"Allowed range: 40 - 240 BPM", 20, 43, 250, 20}, &TempoDialog::small},
    {{L"EDIT", L"", 20, 70, 264, 32, kEditId, WS_TABSTOP | ES_NUMBER | ES_AUTOHSCROLL,
      WS_EX_CLIENTEDGE},
     &TempoDialog::large},
    {{L"BUTTON", L"OK", 46, 120, 92, 32, kOkId, WS_TABSTOP | BS_OWNERDRAW}, &TempoDialog::small},
    {{L"BUTTON", L"CANCEL", 166, 120, 92, 32, kCancelId, WS_TABSTOP | BS_OWNERDRAW},
     &TempoDialog::small},
};

// So that typing replaces the text.
void selectText(const TempoDialog& dialog) {
    SetFocus(dialog.edit);
    SendMessageW(dialog.edit, EM_SETSEL, 0, -1);
}

void createControls(HWND window, TempoDialog& dialog) {
    const int dpi = fitToWorkArea(window, kDesign);
    dialog.large = segoeFont(19, FW_SEMIBOLD, dpi);
    dialog.small = segoeFont(16, FW_NORMAL, dpi);
    for (const TempoControl& each : kControls) {
        addControl(window, each.place, (dialog.*each.font).get(), dpi);
    }
    dialog.edit = GetDlgItem(window, kEditId);
    SendMessageW(dialog.edit, EM_SETLIMITTEXT, kMaxTypedCharacters, 0);
    std::array<wchar_t, kMaxReadCharacters> text{};
    std::swprintf(text.data(), text.size(), L"%.0f", dialog.initialBpm);
    SetWindowTextW(dialog.edit, text.data());
}

std::wstring textOf(HWND edit) {
    std::array<wchar_t, kMaxReadCharacters + 1> text{};
    const int length = GetWindowTextW(edit, text.data(), static_cast<int>(text.size()));
    return {text.data(), text.data() + length};
}

void accept(HWND window, TempoDialog& dialog) {
    dialog.acceptedBpm = parseTempo(textOf(dialog.edit));
    if (dialog.acceptedBpm.has_value()) {
        dialog.done = true;
        return;
    }
    MessageBoxW(window, L"Please enter a BPM value between 40 and 240.", L"Invalid BPM",
                MB_OK | MB_ICONWARNING);
    if (!dialog.done) { // set if the program was closed while the message was open
        selectText(dialog);
    }
}

// Enter and Escape arrive as IDOK and IDCANCEL, which this dialog ignores.
void command(HWND window, TempoDialog& dialog, int id) {
    if (id == kOkId) {
        accept(window, dialog);
    } else if (id == kCancelId) {
        dialog.done = true;
    }
}

LRESULT eraseBackground(HWND window, WPARAM deviceContext, const TempoDialog& dialog) {
    RECT client{};
    GetClientRect(window, &client);
    FillRect(reinterpret_cast<HDC>(deviceContext), &client, dialog.background.get());
    return 1;
}

LRESULT colourEdit(WPARAM deviceContext, const TempoDialog& dialog) {
    auto* const dc = reinterpret_cast<HDC>(deviceContext);
    SetTextColor(dc, colour(kEditText));
    SetBkColor(dc, colour(kEditFill));
    return reinterpret_cast<LRESULT>(dialog.editFill.get());
}

LRESULT drawItem(LPARAM item) {
    const auto& button = *reinterpret_cast<const DRAWITEMSTRUCT*>(item);
    ButtonColours colours = kButton;
    if ((button.itemState & ODS_SELECTED) != 0) {
        colours.fill = kPressedFill;
    }
    drawButton(button, colours);
    return TRUE;
}

LRESULT CALLBACK dialogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        auto* dialog =
            static_cast<TempoDialog*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(dialog));
        createControls(window, *dialog);
        return 0;
    }
    auto* dialog = reinterpret_cast<TempoDialog*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (dialog == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (message) {
    case WM_COMMAND:
        command(window, *dialog, LOWORD(wParam));
        return 0;
    case WM_CLOSE:
    case WM_DESTROY:
        dialog->done = true;
        return 0;
    case WM_SETFOCUS:
        SetFocus(dialog->edit);
        return 0;
    case WM_ERASEBKGND:
        return eraseBackground(window, wParam, *dialog);
    case WM_CTLCOLORSTATIC:
        return colourStatic(wParam, dialog->background.get());
    case WM_CTLCOLOREDIT:
        return colourEdit(wParam, *dialog);
    case WM_DRAWITEM:
        return drawItem(lParam);
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

} // namespace

bool runTempoDialog(HWND owner, double bpm, double& result) {
    if (!registerToolWindowClass(kClass, dialogProc,
                                 nullptr)) { // each dialog erases with its own brush
        return false;
    }
    TempoDialog dialog;
    dialog.initialBpm = bpm;
    const int width = scaledForDpi(kDesign.outer.width);
    const int height = scaledForDpi(kDesign.outer.height);
    const POINT corner = centredOver(owner, width, height);
    HWND window =
        CreateWindowExW(WS_EX_DLGMODALFRAME | WS_EX_TOPMOST | WS_EX_TOOLWINDOW, kClass,
                        L"Set Tempo", WS_POPUP | WS_CAPTION | WS_SYSMENU, corner.x, corner.y, width,
                        height, owner, nullptr, GetModuleHandleW(nullptr), &dialog);
    if (window == nullptr) {
        return false;
    }
    ShowWindow(window, SW_SHOW);
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    selectText(dialog);
    UpdateWindow(window);
    runModal(window, owner, dialog.done);
    result = dialog.acceptedBpm.value_or(bpm);
    return dialog.acceptedBpm.has_value();
}

} // namespace percussomatic
