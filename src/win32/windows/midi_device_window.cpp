// SPDX-License-Identifier: MIT
#include "win32/windows/midi_device_window.h"

#include "midi/midi_state.h"
#include "panel/display_scale.h"
#include "win32/messages.h"
#include "win32/midi/midi_input.h"
#include "win32/windows/message_loop.h"
#include "win32/windows/tool_window.h"

namespace percussomatic {

namespace {

constexpr wchar_t kClass[] = L"LumivardaMidiDeviceSelectorWindow";
constexpr WindowDesign kDesign{{470, 515}, {438, 468}};

enum ControlId : int {
    kNoId = 0,
    kListId = 1001,
    kConnectId = 1002,
    kDisconnectId = 1003,
    kCloseId = 1004,
    kLearnId = 1005,
    kClearId = 1006,
    kInternalId = 1007,
    kMidiId = 1008,
    kRescanId = 1009,
};

struct DeviceControl {
    ControlDefinition place;
    HWND MidiInputContext::*handle = nullptr; // where its handle is stored
};

constexpr DeviceControl kControls[] = {
    {{L"STATIC", L"MIDI IN devices connected to the PC:", 18, 16, 410, 22}},
    {{L"LISTBOX", L"", 18, 42, 420, 170, kListId, WS_VSCROLL | LBS_NOTIFY, WS_EX_CLIENTEDGE},
     &MidiInputContext::deviceList},
    {{L"BUTTON", L"CONNECT", 18, 224, 105, 30, kConnectId}},
    {{L"BUTTON", L"DISCONNECT", 131, 224, 112, 30, kDisconnectId}},
    {{L"BUTTON", L"RESCAN", 251, 224, 90, 30, kRescanId}},
    {{L"BUTTON", L"CLOSE", 349, 224, 89, 30, kCloseId}},
    {{L"STATIC", L"Connected to: No device", 18, 270, 420, 32, kNoId, 0, WS_EX_CLIENTEDGE},
     &MidiInputContext::connectionLine},
    {{L"BUTTON", L"LEARN", 18, 314, 120, 30, kLearnId}},
    {{L"BUTTON", L"CLEAR MAPPINGS", 148, 314, 180, 30, kClearId}},
    {{L"STATIC", L"", 18, 354, 420, 34, kNoId, 0, WS_EX_CLIENTEDGE}, &MidiInputContext::learnLine},
    {{L"STATIC", L"SYNC MODE:", 18, 400, 100, 22}},
    {{L"BUTTON", L"INTERNAL CLOCK", 120, 396, 145, 26, kInternalId, BS_AUTORADIOBUTTON | WS_GROUP},
     &MidiInputContext::internalRadio},
    {{L"BUTTON", L"MIDI CLOCK", 275, 396, 130, 26, kMidiId, BS_AUTORADIOBUTTON},
     &MidiInputContext::midiRadio},
    {{L"STATIC", L"SYNC: INTERNAL", 18, 434, 420, 34, kNoId, 0, WS_EX_CLIENTEDGE},
     &MidiInputContext::syncLine},
};

void createControls(HWND window, MidiInputContext& context) {
    const int dpi = fitToWorkArea(window, kDesign);
    for (const DeviceControl& each : kControls) {
        HWND control = addControl(window, each.place, controlFont(dpi), dpi);
        if (each.handle != nullptr) {
            context.*each.handle = control;
        }
    }
    SetWindowTextW(context.learnLine, midiState().learnStatusText.c_str());
    SendMessageW(context.internalRadio, BM_SETCHECK, BST_CHECKED, 0);
}

void fillDeviceList(const MidiInputContext& context) {
    HWND list = context.deviceList;
    SendMessageW(list, LB_RESETCONTENT, 0, 0);
    const auto add = [list](const wchar_t* text) {
        return SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text));
    };
    const std::vector<MidiInputInfo> ports = enumerateMidiInputs();
    if (ports.empty()) {
        add(L"No MIDI IN device detected");
        return;
    }
    LRESULT open = LB_ERR;
    for (const MidiInputInfo& port : ports) {
        const LRESULT entry = add(port.name.c_str());
        SendMessageW(list, LB_SETITEMDATA, static_cast<WPARAM>(entry), port.deviceId);
        if (port.deviceId == context.deviceId) {
            open = entry;
        }
    }
    if (open != LB_ERR) {
        SendMessageW(list, LB_SETCURSEL, static_cast<WPARAM>(open), 0);
    }
}

void connectSelected(MidiInputContext& context) {
    const LRESULT entry = SendMessageW(context.deviceList, LB_GETCURSEL, 0, 0);
    if (entry == LB_ERR) {
        return;
    }
    const LRESULT id =
        SendMessageW(context.deviceList, LB_GETITEMDATA, static_cast<WPARAM>(entry), 0);
    if (id != LB_ERR) {
        openMidiInput(context, static_cast<UINT>(id));
    }
}

void postCommand(const MidiInputContext& context, WPARAM command) {
    if (const HWND window = context.notifyWindow; window != nullptr) {
        PostMessageW(window, kMidiNotifyMessage, command, 0);
    }
}

// False if the command is left to DefWindowProcW.
bool command(HWND window, MidiInputContext& context, int id, int notification) {
    switch (id) {
    case kListId:
        if (notification != LBN_DBLCLK) {
            return false;
        }
        connectSelected(context);
        return true;
    case kConnectId:
        connectSelected(context);
        return true;
    case kDisconnectId:
        closeMidiInput(context);
        return true;
    case kRescanId:
        fillDeviceList(context);
        refreshConnectionText(context);
        return true;
    case kCloseId:
        hideToolWindow(window);
        return true;
    case kLearnId:
        postCommand(context, kMidiCmdLearn);
        return true;
    case kClearId:
        postCommand(context, kMidiCmdClearMappings);
        return true;
    case kInternalId:
        postCommand(context, kMidiCmdInternalClock);
        return true;
    case kMidiId:
        postCommand(context, kMidiCmdMidiClock);
        return true;
    default:
        return false;
    }
}

void forgetWindows(MidiInputContext& context) {
    context.deviceWindow = nullptr;
    for (const DeviceControl& each : kControls) {
        if (each.handle != nullptr) {
            context.*each.handle = nullptr;
        }
    }
}

LRESULT CALLBACK deviceWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto* created = static_cast<MidiInputContext*>(
            reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(created));
        created->deviceWindow = window;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    auto* context = reinterpret_cast<MidiInputContext*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (context == nullptr) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (message) {
    case WM_CREATE:
        createControls(window, *context);
        fillDeviceList(*context);
        handlePendingSteps(); // the first enumeration is slow: it loads the MIDI drivers
        refreshConnectionText(*context);
        return 0;
    case WM_COMMAND:
        if (command(window, *context, LOWORD(wParam), HIWORD(wParam))) {
            return 0;
        }
        break;
    case WM_CTLCOLORSTATIC: // labels in the window's background colour
        return reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_WINDOW));
    case WM_CLOSE:
        hideToolWindow(window);
        return 0;
    case WM_DESTROY:
        forgetWindows(*context);
        return 0;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

void showMidiDeviceWindow(HWND owner) {
    MidiInputContext& context = midiInputContext();
    if (context.deviceWindow != nullptr && IsWindow(context.deviceWindow) != 0) {
        showToolWindow(context.deviceWindow);
        fillDeviceList(context);
        refreshConnectionText(context);
        return;
    }
    if (!registerToolWindowClass(kClass, deviceWindowProc,
                                 reinterpret_cast<HBRUSH>(INT_PTR{COLOR_WINDOW + 1}))) {
        return;
    }
    HWND window = CreateWindowExW(
        WS_EX_TOOLWINDOW, kClass, L"Percussomatic MIDI", WS_CAPTION | WS_SYSMENU, CW_USEDEFAULT,
        CW_USEDEFAULT, scaledForDpi(kDesign.outer.width), scaledForDpi(kDesign.outer.height), owner,
        nullptr, GetModuleHandleW(nullptr), &context);
    if (window != nullptr) {
        ShowWindow(window, SW_SHOW);
        handlePendingSteps();
        UpdateWindow(window);
    }
}

void showLearnLine(const std::wstring& text) {
    if (HWND line = midiInputContext().learnLine; line != nullptr) {
        SetWindowTextW(line, text.c_str());
    }
}

void showSyncLine(bool externalSync, const std::wstring& text) {
    const MidiInputContext& context = midiInputContext();
    const auto check = [](HWND button, bool on) {
        if (button != nullptr) {
            SendMessageW(button, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0);
        }
    };
    check(context.internalRadio, !externalSync);
    check(context.midiRadio, externalSync);
    if (context.syncLine != nullptr) {
        SetWindowTextW(context.syncLine, text.c_str());
    }
}

} // namespace percussomatic
