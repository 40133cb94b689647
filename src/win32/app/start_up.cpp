// SPDX-License-Identifier: MIT
#include "win32/app/start_up.h"

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "files/file_replacement.h"
#include "midi/midi_state.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "panel/display_scale.h"
#include "panel/layout_scale.h"
#include "panel/panel_state.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "settings_store.h"
#include "win32/app/main_window.h"
#include "win32/audio/wave_out.h"
#include "win32/graphics/images.h"
#include "win32/midi/midi_input.h"
#include "win32/platform/main_window.h"
#include "win32/view/panel_rendering.h"
#include "win32/windows/message_loop.h"

#include <future>

namespace percussomatic {

namespace {

class GdiplusSession {
public:
    GdiplusSession() {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&token_, &input, nullptr);
    }
    GdiplusSession(const GdiplusSession&) = delete;
    GdiplusSession& operator=(const GdiplusSession&) = delete;
    ~GdiplusSession() { Gdiplus::GdiplusShutdown(token_); }

private:
    ULONG_PTR token_ = 0;
};

using Icon = Owned<HICON, DestroyIcon>;

// Releases the panel's pictures and background, which must happen before GDI+ shuts down.
struct PanelPictures {
    PanelPictures() = default;
    PanelPictures(const PanelPictures&) = delete;
    PanelPictures& operator=(const PanelPictures&) = delete;
    ~PanelPictures() {
        releaseBackgroundCache();
        releasePanelImages();
    }
};

int systemDpi() {
    HDC screen = GetDC(nullptr);
    const int dpi = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return dpi;
}

void registerWindowClass(HINSTANCE instance, HICON icon) {
    WNDCLASSW windowClass{};
    windowClass.style = CS_OWNDC;
    windowClass.lpfnWndProc = mainWindowProc;
    windowClass.hInstance = instance;
    windowClass.hIcon = icon;
    windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    windowClass.lpszClassName = kMainWindowClass;
    RegisterClassW(&windowClass);
}

void startSound() {
    SoundEngine& engine = soundEngine();
    waveOut().start(); // a failure is not fatal: the program runs silently and retries
    selectPreset(0);
    engine.setEffectEnabled(false);
    for (std::uint32_t index = 0; index < kInstrumentCount; ++index) {
        engine.setSend(index, 0.0f);
    }
    engine.setAutoStop(true, kSilenceThreshold, kSilenceHoldMs, kMinPlayMs);
    loadLineSamples();
    applyRotary(findControl(control::kMasterRotary));
}

HWND createWindow(HINSTANCE instance) {
    const SIZE size = panelSizeAt(layoutScale());
    return CreateWindowExW(0, kMainWindowClass, L"Percussomatic", WS_POPUP | WS_VISIBLE,
                           (GetSystemMetrics(SM_CXSCREEN) - size.cx) / 2,
                           (GetSystemMetrics(SM_CYSCREEN) - size.cy) / 2, size.cx, size.cy, nullptr,
                           nullptr, instance, nullptr);
}

void runMessageLoop() {
    MSG message{};
    while (nextMessage(message) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

} // namespace

int runPercussomatic(HINSTANCE instance) {
    displayDpi() = systemDpi();
    const GdiplusSession gdiplus;
    const Icon large(createAppIcon(GetSystemMetrics(SM_CXICON), GetSystemMetrics(SM_CYICON)));
    const Icon small(createAppIcon(GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON)));
    registerWindowClass(instance, large.get());
    layoutScale() = readLayoutScale(kLayoutScaleFile);
    resetControlState();
    resetPanelState();
    resetSequencer();
    resetMidiState();

    const PanelPictures pictures;
    const SIZE largest = panelSizeAt(1.0);
    // Decoding takes longest, so it runs in parallel until the window needs the pictures.
    std::future<void> decoding =
        std::async(std::launch::async, loadPanelImages, viewScale({largest.cx, largest.cy}));
    removeStaleTemporaries(settingsFile());
    resetCardPanel();
    loadCards();
    startSound();
    decoding.get();

    const HWND window = createWindow(instance);
    if (window == nullptr) {
        waveOut().stop();
        return 1;
    }
    SendMessageW(window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(large.get()));
    SendMessageW(window, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(small.get()));
    midiInputContext().notifyWindow = window;
    setClockWindow(window);
    setMainWindow(window);
    updateSyncStatus();
    connectSavedMidiInput();

    ShowWindow(window, SW_SHOW);
    UpdateWindow(window);
    runMessageLoop();
    return 0;
}

} // namespace percussomatic
