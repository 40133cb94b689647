// How long does the GUI thread hold up a step? Starts the program, plays it from a second thread by
// posted messages, and looks at every message that the panel's window and its tool windows handle:
// a third thread posts a step without a sound each millisecond, and the longest time within the
// message in which none of them was served is what counts. Prints the worst and the median of each
// kind. Run it in a folder of its own: it saves cards.

#include "cards/card_panel.h"
#include "panel/control_geometry.h"
#include "panel/panel_rects.h"
#include "sequencer/sequencer.h"
#include "sequencer/system.h"
#include "win32/app/main_window.h"
#include "win32/app/start_up.h"
#include "win32/midi/midi_input.h"
#include "win32/windows/message_loop.h"

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

// What the hand is doing. GUI thread: filed under it is what a message takes.
std::atomic<const char*> doing = "start";
std::map<std::string, std::vector<double>> times; // ms
std::map<HWND, WNDPROC> timedWindows;

constexpr UINT kMarker = WM_APP + 0x7F;
std::atomic<int> markers = 0;
constexpr WPARAM kSilentStep = 1;
std::atomic<bool> playing = true;

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

// Since a step was served last, within one message. GUI thread.
struct Waiting {
    std::int64_t since = 0, longest = 0; // ns

    void served() {
        const std::int64_t now = counterNs();
        longest = std::max(longest, now - since);
        since = now;
    }
};

LRESULT CALLBACK timed(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    static int depth = 0; // what a message sends belongs to it
    static Waiting waiting;
    if (message == kMarker) {
        ++markers;
        return 0;
    }
    if (depth > 0 && message == kStepTickMessage) {
        waiting.served();
    }
    if (message == kStepTickMessage && wParam == kSilentStep) {
        return 0;
    }
    const char* what = doing;
    if (depth == 0) {
        waiting = {counterNs(), 0};
    }
    ++depth;
    const LRESULT result = CallWindowProcW(timedWindows[window], window, message, wParam, lParam);
    --depth;
    if (depth == 0 && what != nullptr) {
        waiting.served();
        times[std::string(what) + ": " + nameOf(message)].push_back(
            static_cast<double>(waiting.longest) * 1e-6);
    }
    return result;
}

void timeWindow(HWND window) {
    if (timedWindows.count(window) == 0) {
        timedWindows[window] = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(window, GWLP_WNDPROC));
        SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(timed));
    }
}

// The second thread: a hand that waits until all it posted has been handled.
void answered() {
    const int before = markers;
    PostMessageW(panel(), kMarker, 0, 0);
    while (markers == before) {
        Sleep(1);
    }
}

void mouse(UINT message, PixelPoint at, WPARAM keys = 0) {
    PostMessageW(panel(), message, keys, MAKELPARAM(at.x, at.y));
    Sleep(5);
}

PixelPoint middleOf(const PixelRect& rect) {
    return {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
}

PixelPoint middleOf(const char* name) {
    RECT client{};
    GetClientRect(panel(), &client);
    return middleOf(controlClientRect(findControl(name), viewScale(client.right, client.bottom)));
}

PanelRects rects() {
    RECT client{};
    GetClientRect(panel(), &client);
    return panelRects(client.right, client.bottom, 0.0);
}

void click(PixelPoint at) {
    mouse(WM_LBUTTONDOWN, at);
    mouse(WM_LBUTTONUP, at);
    answered();
}

void drag(const char* what, const char* control, int dx, int dy) {
    doing = what;
    const PixelPoint from = middleOf(control);
    mouse(WM_LBUTTONDOWN, from);
    for (int i = 1; i <= 100; ++i) {
        mouse(WM_MOUSEMOVE, {from.x + dx * i / 100, from.y + dy * i / 100});
    }
    mouse(WM_LBUTTONUP, from);
    answered();
}

void openAndClose(const char* first, const char* again, PixelPoint box,
                  const wchar_t* windowClass) {
    for (const char* what : {first, again}) {
        doing = what;
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

// A modal dialog runs its own loop: from the click until it stands there.
void timeDialog(const char* what, PixelPoint box, const wchar_t* windowClass) {
    doing = nullptr;
    const std::int64_t start = counterNs();
    mouse(WM_LBUTTONDOWN, box);
    HWND dialog = nullptr;
    while ((dialog = FindWindowW(windowClass, nullptr)) == nullptr ||
           IsWindowVisible(dialog) == 0) {
        Sleep(1);
    }
    SendMessageW(dialog, WM_NULL, 0, 0);
    std::printf("%-44s %8.2f ms from the click until it stands there\n", what,
                static_cast<double>(counterNs() - start) * 1e-6);
    SendMessageW(dialog, WM_CLOSE, 0, 0);
    answered();
}

void resize() {
    doing = "resize";
    for (const int direction : {-1, 1}) {
        for (int i = 0; i < 14; ++i) {
            mouse(WM_MOUSEWHEEL, {0, 0},
                  MAKEWPARAM(MK_CONTROL, static_cast<WORD>(direction * WHEEL_DELTA)));
            answered();
        }
    }
}

void playCards() {
    doing = "cards dialog";
    click(middleOf(rects().cards));
    for (int i = 0; i < 30; ++i) {
        click(middleOf(rects().nextCard));
    }
    timeDialog("TITLE", middleOf(rects().title), L"PunchCardTitleDialog");
    doing = "save";
    for (int i = 0; i < 30; ++i) {
        click(middleOf(rects().save));
    }
    doing = "insertion";
    click(middleOf(rects().load));
    while (!cardPanel().cardInserted) {
        Sleep(50);
    }
    Sleep(200);
    click(middleOf("sw_008")); // edit off again
}

void flood() {
    doing = "learn";
    PostMessageW(panel(), kMidiNotifyMessage, kMidiCmdLearn, 0);
    click(middleOf("rotary_001"));
    doing = "flood of CC";
    for (int i = 0; i < 6000; ++i) {
        PostMessageW(panel(), kMidiNotifyMessage, static_cast<WPARAM>(0x07B0 | (i % 128) << 16), 0);
        if (i % 8 == 7) {
            Sleep(4);
        }
    }
    answered();
}

void play() {
    doing = nullptr;
    for (int line = 0; line < kLineCount; ++line) {
        for (int step = 0; step < kStepCount; ++step) {
            char name[16];
            std::snprintf(name, sizeof name, "bottone_%03d", line * kStepCount + step + 1);
            click(middleOf(name));
        }
    }
    const PixelPoint tempo = middleOf("rotary_002");
    mouse(WM_LBUTTONDOWN, tempo);
    mouse(WM_MOUSEMOVE, {tempo.x, tempo.y - 1000}); // 240 BPM
    mouse(WM_LBUTTONUP, tempo);
    click(middleOf("sw_007"));
    doing = "playing";
    Sleep(5000);
    drag("dial", "rotary_001", 0, 150);
    drag("slider", "slider_003", 120, 0);
    doing = "step button";
    for (int i = 0; i < 100; ++i) {
        click(middleOf("bottone_035"));
    }
    resize();
    openAndClose("EFFECTS, first time", "EFFECTS, again", middleOf(rects().effects),
                 L"PercussomaticEffectsWindow");
    openAndClose("INFO, first time", "INFO, again", middleOf(rects().info),
                 L"PercussomaticAboutWindow");
    openAndClose("MIDI, first time", "MIDI, again", middleOf(rects().midi),
                 L"LumivardaMidiDeviceSelectorWindow");
    timeDialog("BPM", middleOf(rects().bpm), L"PercussomaticBpmEditDialog");
    playCards();
    flood();
    doing = nullptr;
    PostMessageW(panel(), WM_KEYDOWN, VK_ESCAPE, 0);
}

void postSilentSteps() {
    while (playing) {
        PostMessageW(panel(), kStepTickMessage, kSilentStep, 0);
        Sleep(1);
    }
}

std::thread hand, steps; // joined when the program's loop has ended

void CALLBACK onceStarted(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    timeWindow(panel());
    steps = std::thread(postSilentSteps);
    hand = std::thread(play);
}

void print() {
    std::printf("\n%-44s %7s %11s %11s\n", "message", "times", "median", "worst");
    std::vector<std::pair<double, std::string>> order;
    for (auto& [name, all] : times) {
        std::sort(all.begin(), all.end());
        order.emplace_back(-all.back(), name);
    }
    std::sort(order.begin(), order.end());
    for (const auto& [worst, name] : order) {
        const std::vector<double>& all = times[name];
        std::printf("%-44s %7zu %8.2f ms %8.2f ms\n", name.c_str(), all.size(), all[all.size() / 2],
                    -worst);
    }
}

} // namespace
} // namespace percussomatic

int main() {
    SetTimer(nullptr, 0, 1000, percussomatic::onceStarted);
    const int code = percussomatic::runPercussomatic(GetModuleHandleW(nullptr));
    percussomatic::hand.join();
    percussomatic::playing = false;
    percussomatic::steps.join();
    percussomatic::print();
    return code;
}
