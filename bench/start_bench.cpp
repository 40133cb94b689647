// SPDX-License-Identifier: MIT
// What does each step of the start-up cost? Calls the steps one after another, in the program's
// order, and prints how many milliseconds each takes. The program itself decodes the pictures in
// parallel with loading cards and sound. Run it in a folder with cards.

#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "midi/midi_state.h"
#include "panel/control_geometry.h"
#include "panel/control_state.h"
#include "panel/layout_scale.h"
#include "panel/panel_state.h"
#include "sequencer/sequencer.h"
#include "system_time.h"
#include "win32/audio/wave_out.h"
#include "win32/graphics/gdiplus_flat.h"
#include "win32/graphics/images.h"
#include "win32/graphics/screen_pixels.h"
#include "win32/midi/midi_input.h"
#include "win32/view/panel_rendering.h"

#include <cstdio>

namespace percussomatic {
namespace {

template <typename Work>
void timed(const char* what, Work work) {
    const std::int64_t start = counterNs();
    work();
    std::printf("%-44s %8.2f\n", what, static_cast<double>(counterNs() - start) * 1e-6);
}

void startInSteps() {
    const Size size =
        initialWindowSize(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), 1.0);
    ULONG_PTR token = 0;
    HWND window = nullptr;
    timed("GDI+", [&] {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&token, &input, nullptr);
    });
    timed("two icons", [] {
        DestroyIcon(createAppIcon(32, 32));
        DestroyIcon(createAppIcon(16, 16));
    });
    timed("layout scale, empty panel", [] {
        readLayoutScale(kLayoutScaleFile);
        resetControlState();
        resetPanelState();
        resetSequencer();
        resetMidiState();
    });
    timed("pictures (parallel to the next three)", [size] { loadPanelImages(viewScale(size)); });
    timed("ten cards", [] {
        resetCardPanel();
        loadCards();
    });
    timed("output device", [] { waveOut().start(); });
    timed("twelve recordings", loadLineSamples);
    timed("window", [&] {
        window = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, size.width, size.height,
                                 nullptr, nullptr, nullptr, nullptr);
    });
    timed("background", [&] { rebuildBackgroundCache(window); });
    timed("MIDI port of the last run", connectSavedMidiInput);
    timed("first paint", [&] {
        screenPixels().fit(size);
        composePanel(screenPixels().view(), {0, 0, size.width, size.height}, size);
    });
    waveOut().stop();
    DestroyWindow(window);
    releaseBackgroundCache();
    releasePanelImages();
    Gdiplus::GdiplusShutdown(token);
}

} // namespace
} // namespace percussomatic

int main() {
    percussomatic::startInSteps();
}
