#include "app/start_up.h"

#include "app/main_window.h"
#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "audio/wave_out.h"
#include "cards/card_file.h"
#include "cards/card_panel.h"
#include "midi/midi_input.h"
#include "midi/midi_state.h"
#include "midi/settings_file.h"
#include "sequencer/front_panel.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "ui/display_scale.h"
#include "ui/images.h"
#include "ui/layout_scale.h"
#include "ui/message_loop.h"
#include "ui/panel_rendering.h"

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

// The panel's pictures and background, which must be gone before GDI+ is.
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

LayoutSize windowSizeAt(double scale) {
    return initialWindowSize(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), scale);
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
    constexpr float kSilence = 1.0e-5f;
    constexpr std::uint32_t kInstruments = 12;
    SoundEngine& engine = soundEngine();
    waveOut().start(); // without a device the instrument runs silently
    selectPreset(0);
    engine.setEffectEnabled(false);
    for (std::uint32_t index = 0; index < kInstruments; ++index) {
        engine.setSend(index, 0.0f);
    }
    engine.setAutoStop(true, kSilence, 100, 50);
    loadLineSamples();
    applyRotary(findControl("rotary_001"));
}

HWND createWindow(HINSTANCE instance) {
    const LayoutSize size = windowSizeAt(layoutScale());
    return CreateWindowExW(0, kMainWindowClass, L"Percussomatic", WS_POPUP | WS_VISIBLE,
                           (GetSystemMetrics(SM_CXSCREEN) - size.width) / 2,
                           (GetSystemMetrics(SM_CYSCREEN) - size.height) / 2, size.width,
                           size.height, nullptr, nullptr, instance, nullptr);
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
    const LayoutSize largest = windowSizeAt(1.0);
    // Decoding takes longest; until the window needs the pictures it runs beside the rest.
    std::future<void> decoding =
        std::async(std::launch::async, loadPanelImages, viewScale(largest.width, largest.height));
    sweepUnfinished(settingsFile());
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
