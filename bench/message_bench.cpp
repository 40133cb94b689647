// SPDX-License-Identifier: MIT
// How long does the GUI thread delay a step? Starts the program and operates it from a second
// thread with posted messages. A third thread posts a silent step every millisecond. For every
// message handled by the panel's window or a tool window, measures the longest time during which
// the GUI thread handled no step. Prints the median and the worst time for each kind of message.
// Run it in a folder of its own: it saves cards.

#include "cards/card_panel.h"
#include "main_window_handle.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/panel_rects.h"
#include "sequencer/sequencer.h"
#include "system_time.h"
#include "win32/app/main_window.h"
#include "win32/app/start_up.h"
#include "win32/messages.h"
#include "win32/view/panel_rendering.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace percussomatic {
namespace {

// What the user thread is doing now; null while nothing is recorded.
std::atomic<const char*> action = "start";
std::map<std::string, std::vector<double>> timesMs; // by action and message; GUI thread only
std::map<HWND, WNDPROC> timedWindows;               // their original window procedures

constexpr UINT kMarkerMessage = WM_APP + 0x7F;
std::atomic<int> handledMarkers = 0;
constexpr WPARAM kSilentStep = 1;
std::atomic<bool> postingSteps = true;

HWND panel() {
    return static_cast<HWND>(mainWindow());
}

std::string nameOf(UINT message) {
    switch (message) {
    case WM_PAINT:
        return "paint";
    case WM_TIMER:
        return "timer";
    case WM_LBUTTONDOWN:
        return "press";
    case WM_MOUSEMOVE:
        return "move";
    case WM_LBUTTONUP:
        return "release";
    case WM_MOUSEWHEEL:
        return "wheel";
    case WM_HSCROLL:
        return "scroll";
    case kStepTickMessage:
        return "step";
    case kMidiNotifyMessage:
        return "MIDI";
    default:
        return "other";
    }
}

// The longest time without a handled step, within one message. GUI thread only.
struct StepGap {
    std::int64_t lastStepNs = 0, longestNs = 0;

    void stepHandled() {
        const std::int64_t nowNs = counterNs();
        longestNs = std::max(longestNs, nowNs - lastStepNs);
        lastStepNs = nowNs;
    }
};

LRESULT CALLBACK timedProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    static int depth = 0; // messages sent while handling a message count as part of it
    static StepGap gap;
    if (message == kMarkerMessage) {
        ++handledMarkers;
        return 0;
    }
    if (depth > 0 && message == kStepTickMessage) {
        gap.stepHandled();
    }
    if (message == kStepTickMessage && wParam == kSilentStep) {
        return 0;
    }
    const char* what = action;
    if (depth == 0) {
        gap = {counterNs(), 0};
    }
    ++depth;
    const LRESULT result = CallWindowProcW(timedWindows[window], window, message, wParam, lParam);
    --depth;
    if (depth == 0 && what != nullptr) {
        gap.stepHandled();
        timesMs[std::string(what) + ": " + nameOf(message)].push_back(
            static_cast<double>(gap.longestNs) * 1e-6);
    }
    return result;
}

void timeWindow(HWND window) {
    if (!timedWindows.contains(window)) {
        timedWindows[window] = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(timedProc));
    }
}

// User thread: blocks until the GUI thread has handled everything posted so far.
void waitUntilHandled() {
    const int before = handledMarkers;
    PostMessageW(panel(), kMarkerMessage, 0, 0);
    while (handledMarkers == before) {
        Sleep(1);
    }
}

void mouse(UINT message, PixelPoint at, WPARAM keys = 0) {
    PostMessageW(panel(), message, keys, MAKELPARAM(at.x, at.y));
    Sleep(5);
}

PixelPoint centreOf(const PixelRect& rect) {
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

PixelPoint centreOf(int control) {
    return centreOf(controlClientRect(control, windowScale(panel())));
}

PixelPoint centreOf(std::string_view control) {
    return centreOf(findControl(control));
}

PanelRects rects() {
    const Size client = clientSize(panel());
    return panelRects(client.width, client.height, 0.0);
}

void click(PixelPoint at) {
    mouse(WM_LBUTTONDOWN, at);
    mouse(WM_LBUTTONUP, at);
    waitUntilHandled();
}

void drag(const char* what, std::string_view control, int dx, int dy) {
    action = what;
    const PixelPoint from = centreOf(control);
    mouse(WM_LBUTTONDOWN, from);
    for (int i = 1; i <= 100; ++i) {
        mouse(WM_MOUSEMOVE, {from.x + dx * i / 100, from.y + dy * i / 100});
    }
    mouse(WM_LBUTTONUP, from);
    waitUntilHandled();
}

void openAndClose(const char* first, const char* again, PixelPoint box,
                  const wchar_t* windowClass) {
    for (const char* what : {first, again}) {
        action = what;
        click(box);
        const HWND window = FindWindowW(windowClass, nullptr);
        if (window == nullptr) {
            std::printf("%s: no window\n", what);
            return;
        }
        timeWindow(window);
        Sleep(300);
        SendMessageW(window, WM_CLOSE, 0, 0);
    }
}

// A modal dialog runs its own message loop, so this times from the click until the dialog is
// visible.
void timeDialog(const char* what, PixelPoint box, const wchar_t* windowClass) {
    action = nullptr;
    const std::int64_t start = counterNs();
    mouse(WM_LBUTTONDOWN, box);
    HWND dialog = nullptr;
    while ((dialog = FindWindowW(windowClass, nullptr)) == nullptr ||
           IsWindowVisible(dialog) == 0) {
        Sleep(1);
    }
    SendMessageW(dialog, WM_NULL, 0, 0);
    std::printf("%-44s %8.2f ms from the click until it is visible\n", what,
                static_cast<double>(counterNs() - start) * 1e-6);
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    waitUntilHandled();
}

void resize() {
    action = "resize";
    for (const int direction : {-1, 1}) {
        for (int i = 0; i < 14; ++i) {
            mouse(WM_MOUSEWHEEL, {0, 0},
                  MAKEWPARAM(MK_CONTROL, static_cast<WORD>(direction * WHEEL_DELTA)));
            waitUntilHandled();
        }
    }
}

void playCards() {
    action = "cards dialog";
    click(centreOf(rects().cards));
    for (int i = 0; i < 30; ++i) {
        click(centreOf(rects().nextCard));
    }
    timeDialog("TITLE", centreOf(rects().title), L"PunchCardTitleDialog");
    action = "save";
    for (int i = 0; i < 30; ++i) {
        click(centreOf(rects().save));
    }
    action = "insertion";
    click(centreOf(rects().load));
    while (!cardPanel().cardInserted) {
        Sleep(50);
    }
    Sleep(200);
    click(centreOf(control::kEdit)); // loading has turned edit mode on
}

void floodWithControlChanges() {
    action = "learn";
    PostMessageW(panel(), kMidiNotifyMessage, kMidiCmdLearn, 0);
    click(centreOf(control::kMasterRotary));
    action = "flood of CC";
    for (int i = 0; i < 6000; ++i) {
        PostMessageW(panel(), kMidiNotifyMessage, static_cast<WPARAM>(0x07B0 | (i % 128) << 16), 0);
        if (i % 8 == 7) {
            Sleep(4);
        }
    }
    waitUntilHandled();
}

void operatePanel() {
    action = nullptr;
    for (int line = 0; line < kLineCount; ++line) {
        for (int step = 0; step < kStepCount; ++step) {
            click(centreOf(stepButtonIndex(line, step)));
        }
    }
    const PixelPoint tempo = centreOf(control::kTempoRotary);
    mouse(WM_LBUTTONDOWN, tempo);
    mouse(WM_MOUSEMOVE, {tempo.x, tempo.y - 1000}); // 240 BPM
    mouse(WM_LBUTTONUP, tempo);
    click(centreOf(control::kStartStop));
    action = "playing";
    Sleep(5000);
    drag("dial", control::kMasterRotary, 0, 150);
    drag("slider", control::line(2).slider, 120, 0);
    action = "step button";
    for (int i = 0; i < 100; ++i) {
        click(centreOf(stepButtonIndex(2, 2)));
    }
    resize();
    openAndClose("EFFECTS, first time", "EFFECTS, again", centreOf(rects().effects),
                 L"PercussomaticEffectsWindow");
    openAndClose("INFO, first time", "INFO, again", centreOf(rects().info),
                 L"PercussomaticAboutWindow");
    openAndClose("MIDI, first time", "MIDI, again", centreOf(rects().midi),
                 L"LumivardaMidiDeviceSelectorWindow");
    timeDialog("BPM", centreOf(rects().bpm), L"PercussomaticBpmEditDialog");
    playCards();
    floodWithControlChanges();
    action = nullptr;
    PostMessageW(panel(), WM_KEYDOWN, VK_ESCAPE, 0);
}

void postSilentSteps() {
    while (postingSteps) {
        PostMessageW(panel(), kStepTickMessage, kSilentStep, 0);
        Sleep(1);
    }
}

std::thread userThread, stepThread; // joined after the program's message loop has ended

void CALLBACK onStarted(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    timeWindow(panel());
    stepThread = std::thread(postSilentSteps);
    userThread = std::thread(operatePanel);
}

void print() {
    std::printf("\n%-44s %7s %11s %11s\n", "message", "count", "median", "worst");
    std::vector<std::pair<double, std::string>> order;
    for (auto& [name, all] : timesMs) {
        std::sort(all.begin(), all.end());
        order.emplace_back(-all.back(), name);
    }
    std::sort(order.begin(), order.end());
    for (const auto& [worst, name] : order) {
        const std::vector<double>& all = timesMs[name];
        std::printf("%-44s %7zu %8.2f ms %8.2f ms\n", name.c_str(), all.size(), all[all.size() / 2],
                    -worst);
    }
}

} // namespace
} // namespace percussomatic

int main() {
    SetTimer(nullptr, 0, 1000, percussomatic::onStarted);
    const int code = percussomatic::runPercussomatic(GetModuleHandleW(nullptr));
    percussomatic::userThread.join();
    percussomatic::postingSteps = false;
    percussomatic::stepThread.join();
    percussomatic::print();
    return code;
}
