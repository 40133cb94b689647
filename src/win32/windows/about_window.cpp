// SPDX-License-Identifier: MIT
#include "win32/windows/about_window.h"

#include "audio/sound_engine.h"
#include "cards/card_file.h"
#include "panel/display_scale.h"
#include "panel/layout_scale.h"
#include "sequencer/step_clock.h"
#include "settings_store.h"
#include "win32/audio/wave_out.h"
#include "win32/midi/midi_input.h"
#include "win32/windows/message_loop.h"
#include "win32/windows/tool_window.h"

#include <array>
#include <cwchar>
#include <filesystem>
#include <optional>
#include <string>

namespace percussomatic {

namespace {

constexpr wchar_t kClass[] = L"PercussomaticAboutWindow";
constexpr DWORD kStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU, kExtendedStyle = WS_EX_TOOLWINDOW;
constexpr int kWidth = 660;
constexpr WindowDesign kDesign{{}, {kWidth, 653}};
constexpr std::uint32_t kAmber = 0xD6912D;

constexpr int kHeadingId = 1, kRuleId = 2;
constexpr int kStatusId = 10; // the first of the values
constexpr UINT_PTR kRefreshTimer = 1;
constexpr UINT kRefreshMs = 1000;

// One line of current values.
struct StatusRow {
    const wchar_t* label;
    std::wstring (*value)();
    DWORD style = 0;
};

std::wstring outputDevice() {
    return waveOut().device != nullptr ? L"open" : L"no device, looking for one";
}

std::wstring outputFormat() {
    constexpr double kMs = 1000.0 * kOutputBufferCount * kDeviceBufferFrames / kDeviceRateHz;
    std::array<wchar_t, 64> text{};
    std::swprintf(text.data(), text.size(), L"%u Hz, %zu \u00D7 %u frames, %.1f ms", kDeviceRateHz,
                  kOutputBufferCount, kDeviceBufferFrames, kMs);
    return text.data();
}

std::wstring midiDevice() {
    const std::wstring& name = midiInputContext().deviceName;
    return name.empty() ? L"none connected" : name;
}

std::wstring cardFolder() {
    std::error_code error;
    return std::filesystem::absolute(kCardFolder, error).wstring();
}

std::wstring panelSize() {
    std::array<wchar_t, 64> text{};
    std::swprintf(text.data(), text.size(), L"%.0f %% of what fits the screen",
                  100.0 * layoutScale());
    return text.data();
}

std::wstring countSinceStart(std::uint32_t count) {
    return std::to_wstring(count) + L" since the program started";
}

constexpr StatusRow kStatusRows[] = {
    {L"Sound output", outputDevice},
    {L"Sound format", outputFormat},
    {L"Voices", [] { return std::to_wstring(kVoiceCount); }},
    {L"MIDI device", midiDevice},
    {L"Cards folder", cardFolder, SS_PATHELLIPSIS},
    {L"Settings file", [] { return settingsFile().wstring(); }, SS_PATHELLIPSIS},
    {L"Panel size", panelSize},
    {L"Late sound buffers", [] { return countSinceStart(waveOut().lateBuffers); }},
    {L"Late steps", [] { return countSinceStart(soundEngine().lateTriggerCount()); }},
    {L"Dropped steps", [] { return countSinceStart(droppedStepCount()); }},
};

// Created and destroyed with the window.
struct AboutWindow {
    HWND window = nullptr;
    int dpi;
    GdiFont title = segoeFont(24, FW_BOLD, dpi);
    GdiFont heading = segoeFont(16, FW_SEMIBOLD, dpi);
    GdiFont text = segoeFont(14, FW_NORMAL, dpi);
    GdiBrush fill{CreateSolidBrush(colour(kToolWindowFill))};
    GdiBrush rule{CreateSolidBrush(colour(kAmber))};
    std::array<std::wstring, std::size(kStatusRows)> shown{};
};

std::optional<AboutWindow> theWindow; // GUI thread only

// Layout of the client area, in pixels at 96 DPI.
constexpr int kLeft = 28, kTextWidth = kWidth - 2 * kLeft;
constexpr int kLabelWidth = 176, kValueLeft = kLeft + kLabelWidth + 14;
constexpr int kLine = 20, kRow = 23;
constexpr int kStatusTop = 120, kGesturesTop = 395, kCreditsTop = 601;
constexpr int kHeadingHeight = 32;

struct PageLine {
    ControlDefinition place;
    GdiFont AboutWindow::*font;
};

constexpr PageLine kPage[] = {
    {{L"STATIC", L"PERCUSSOMATIC", kLeft, 18, 400, 32}, &AboutWindow::title},
    {{L"STATIC", L"Version " PERCUSSOMATIC_VERSION, kLeft + 404, 27, kTextWidth - 404, kLine, 0,
      SS_RIGHT},
     &AboutWindow::text},
    {{L"STATIC",
      L"A drum machine: six lines of sixteen steps, twelve instruments, a plate reverb and a "
      L"reader for punch cards.",
      kLeft, 56, kTextWidth, 2 * kLine},
     &AboutWindow::text},
    {{L"STATIC", L"", kLeft, kStatusTop - 14, kTextWidth, 1, kRuleId}, &AboutWindow::text},
    {{L"STATIC", L"STATUS", kLeft, kStatusTop, kTextWidth, 24, kHeadingId}, &AboutWindow::heading},
    {{L"STATIC", L"MOUSE AND KEYS", kLeft, kGesturesTop, kTextWidth, 24, kHeadingId},
     &AboutWindow::heading},
    {{L"STATIC", L"", kLeft, kCreditsTop, kTextWidth, 1, kRuleId}, &AboutWindow::text},
    {{L"STATIC", L"Percussomatic developers, 2026", kLeft, kCreditsTop + 14, 400, kLine},
     &AboutWindow::text},
    {{L"STATIC", L"MIT licence", kLeft + 404, kCreditsTop + 14, kTextWidth - 404, kLine, 0,
      SS_RIGHT},
     &AboutWindow::text},
};

struct Gesture {
    const wchar_t* input;
    const wchar_t* effect;
};

constexpr Gesture kGestures[] = {
    {L"Drag", L"up or down turns a dial, sideways moves a slider"},
    {L"Shift-drag", L"turns a dial in finer steps"},
    {L"Wheel", L"turns the dial under the pointer"},
    {L"Shift-wheel", L"turns it in finer steps"},
    {L"Ctrl and +, \u2212 or wheel", L"makes the panel larger or smaller"},
    {L"Drag the background", L"moves the window"},
    {L"Escape", L"closes this window or the card dialog, otherwise quits"},
};

void addRow(const AboutWindow& about, int y, const wchar_t* label, const wchar_t* value, int id,
            DWORD style) {
    addControl(about.window, {L"STATIC", label, kLeft, y, kLabelWidth, kLine}, about.text.get(),
               about.dpi);
    addControl(about.window,
               {L"STATIC", value, kValueLeft, y, kWidth - kLeft - kValueLeft, kLine, id,
                style | SS_NOPREFIX},
               about.text.get(), about.dpi);
}

void create(HWND window) {
    const AboutWindow& about =
        theWindow.emplace(AboutWindow{.window = window, .dpi = fitToWorkArea(window, kDesign)});
    for (const PageLine& each : kPage) {
        addControl(window, each.place, (about.*each.font).get(), about.dpi);
    }
    int y = kStatusTop + kHeadingHeight;
    for (int id = kStatusId; const StatusRow& row : kStatusRows) {
        addRow(about, y, row.label, L"", id++, row.style);
        y += kRow;
    }
    y = kGesturesTop + kHeadingHeight;
    for (const Gesture& gesture : kGestures) {
        addRow(about, y, gesture.input, gesture.effect, 0, 0);
        y += kRow;
    }
}

// Updates only changed values, because rewriting all of them would flicker every second.
void refresh() {
    for (int row = 0; std::wstring & shown : theWindow->shown) {
        const std::wstring value = kStatusRows[row].value();
        if (value != shown) {
            shown = value;
            SetDlgItemTextW(theWindow->window, kStatusId + row, shown.c_str());
        }
        ++row;
    }
}

void runRefreshTimer(HWND window, bool visible) {
    if (visible) {
        SetTimer(window, kRefreshTimer, kRefreshMs, nullptr);
    } else {
        KillTimer(window, kRefreshTimer);
    }
}

LRESULT keyDown(HWND window, WPARAM key, LPARAM lParam) {
    if (key == VK_ESCAPE) {
        hideToolWindow(window);
        return 0;
    }
    return DefWindowProcW(window, WM_KEYDOWN, key, lParam);
}

LRESULT colourControl(WPARAM deviceContext, HWND line) {
    const int id = GetDlgCtrlID(line);
    if (id == kRuleId) {
        return reinterpret_cast<LRESULT>(theWindow->rule.get());
    }
    const LRESULT background = colourStatic(deviceContext, theWindow->fill.get());
    if (id == kHeadingId) {
        SetTextColor(reinterpret_cast<HDC>(deviceContext), colour(kAmber));
    }
    return background;
}

LRESULT eraseBackground(HWND window, WPARAM deviceContext) {
    RECT client{};
    GetClientRect(window, &client);
    FillRect(reinterpret_cast<HDC>(deviceContext), &client, theWindow->fill.get());
    return 1;
}

LRESULT CALLBACK aboutWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        create(window);
        return 0;
    }
    if (!theWindow) {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    switch (message) {
    case WM_SHOWWINDOW:
        runRefreshTimer(window, wParam != FALSE);
        return 0;
    case WM_TIMER:
        refresh();
        return 0;
    case WM_KEYDOWN:
        return keyDown(window, wParam, lParam);
    case WM_CTLCOLORSTATIC:
        return colourControl(wParam, reinterpret_cast<HWND>(lParam));
    case WM_ERASEBKGND:
        return eraseBackground(window, wParam);
    case WM_CLOSE:
        hideToolWindow(window);
        return 0;
    case WM_NCDESTROY: // the controls that use the fonts have been destroyed
        theWindow.reset();
        return DefWindowProcW(window, message, wParam, lParam);
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

void createWindow(HWND owner) {
    RECT outer{0, 0, scaledForDpi(kDesign.content.width), scaledForDpi(kDesign.content.height)};
    AdjustWindowRectEx(&outer, kStyle, FALSE, kExtendedStyle);
    const int width = outer.right - outer.left, height = outer.bottom - outer.top;
    const POINT corner = centredOver(owner, width, height);
    CreateWindowExW(kExtendedStyle, kClass, L"PERCUSSOMATIC - INFO", kStyle, corner.x, corner.y,
                    width, height, owner, nullptr, GetModuleHandleW(nullptr), nullptr);
}

} // namespace

void showAboutWindow(HWND owner) {
    if (!theWindow && registerToolWindowClass(kClass, aboutWindowProc, nullptr)) {
        createWindow(owner);
    }
    if (theWindow) {
        refresh();
        showToolWindow(theWindow->window);
    }
}

void destroyAboutWindow() {
    if (theWindow) {
        DestroyWindow(theWindow->window);
    }
}

} // namespace percussomatic
