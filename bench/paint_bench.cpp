// SPDX-License-Identifier: MIT
// What does each kind of panel repaint cost? Starts the program and, from a timer in its message
// loop, times each kind of repaint on the real window. Prints milliseconds (median and worst) and
// the ratio to a full repaint.

#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "main_window_handle.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "panel/panel_state.h"
#include "redraw.h"
#include "sequencer/sequencer.h"
#include "sequencer/transport.h"
#include "system_time.h"
#include "win32/app/start_up.h"

#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <utility>
#include <vector>

namespace percussomatic {
namespace {

HWND panel() {
    return static_cast<HWND>(mainWindow());
}

double measureMs(const std::function<void()>& work) {
    const std::int64_t start = counterNs();
    work();
    GdiFlush();
    return static_cast<double>(counterNs() - start) * 1e-6;
}

double measureAndPrint(const char* what, int rounds, double fullMs,
                       const std::function<void(int)>& work) {
    std::vector<double> times(static_cast<unsigned>(rounds));
    for (int round = 0; double& time : times) {
        time = measureMs([&] { work(round); });
        ++round;
    }
    std::sort(times.begin(), times.end());
    const double median = times[times.size() / 2];
    std::printf("%-34s median %7.3f ms, worst %7.3f ms", what, median, times.back());
    std::printf(fullMs > 0.0 ? ", 1/%.0f of a full repaint\n" : "\n", fullMs / median);
    std::fflush(stdout);
    return median;
}

void fillPattern() {
    for (int line = 0; line < kLineCount; ++line) {
        for (int step = 0; step < kStepCount; ++step) {
            sequencer().pattern.set(line, step, true);
        }
    }
}

void insertCard() {
    CardPanel& cards = cardPanel();
    cards.slots[0].used = true;
    cards.slots[0].pattern = sequencer().pattern;
    cards.insertingCard = true;
}

void resizeTo(int percent, SIZE full) {
    SetWindowPos(panel(), nullptr, 0, 0, full.cx * percent / 100, full.cy * percent / 100,
                 SWP_NOMOVE | SWP_NOZORDER);
    UpdateWindow(panel());
}

void measureRepaints() {
    RECT client{};
    GetClientRect(panel(), &client);
    const SIZE full{client.right, client.bottom};
    std::printf("panel of %ld x %ld pixels\n", full.cx, full.cy);
    fillPattern();
    sequencer().running = true;
    sequencer().externalSync = true; // stops the program's own step clock

    const double fullMs = measureAndPrint("full repaint", 30, 0.0, [](int) { redrawPanel(); });
    measureAndPrint("a step", 200, fullMs, [](int) {
        onClockTick();
        flushPainting();
    });
    const int dial = findControl(control::kTempoRotary);
    measureAndPrint("a dial while it is dragged", 200, fullMs, [dial](int round) {
        panelState().tempo.value = round / 200.0;
        redrawControl(dial, Repaint::now);
    });
    measureAndPrint("a slider while it is dragged", 200, fullMs, [](int round) {
        const int slider = findControl(control::line(2).slider);
        const auto offset = static_cast<std::uint32_t>(3 * round);
        const std::uint32_t old = std::exchange(controlState().offset(slider), offset);
        redrawSlider(slider, old);
    });
    insertCard();
    measureAndPrint("the reader during an insertion", 60, fullMs, [](int round) {
        cardPanel().readerCardY = round * 8.0;
        redrawReader();
        flushPainting();
    });
    cardPanel().insertingCard = false;
    measureAndPrint("rebuild after a resize", 20, fullMs,
                    [full](int round) { resizeTo(round % 2 == 0 ? 90 : 100, full); });
    DestroyWindow(panel());
}

void CALLBACK onStarted(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    measureRepaints();
}

} // namespace
} // namespace percussomatic

int main() {
    SetTimer(nullptr, 0, 1000, percussomatic::onStarted);
    return percussomatic::runPercussomatic(GetModuleHandleW(nullptr));
}
