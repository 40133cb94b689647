#include "app/main_window.h"

#include "app/about_window.h"
#include "audio/effects_window.h"
#include "audio/wave_out.h"
#include "cards/card_panel.h"
#include "cards/card_saver.h"
#include "cards/title_dialog.h"
#include "midi/midi_clock.h"
#include "midi/midi_connection.h"
#include "midi/midi_device_window.h"
#include "midi/midi_glide.h"
#include "midi/midi_input.h"
#include "midi/midi_learn.h"
#include "midi/midi_message.h"
#include "sequencer/front_panel.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/system.h"
#include "sequencer/tempo_dialog.h"
#include "sequencer/transport.h"
#include "ui/layout_scale.h"
#include "ui/message_loop.h"
#include "ui/panel_rendering.h"

#include <windowsx.h>

namespace percussomatic {

namespace {

// A drag of any bare part of the panel moves the window, which has no caption.
struct WindowDrag {
    bool windowDragging = false;
    int windowDragAnchorX = 0, windowDragAnchorY = 0; // client pixels
};

WindowDrag& windowDrag() noexcept {
    static WindowDrag drag;
    return drag;
}

PixelPoint pointOf(LPARAM lParam) noexcept {
    return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
}

bool shiftIsDown() noexcept {
    return GetKeyState(VK_SHIFT) < 0;
}

void changeLayoutScale(HWND window, double delta) {
    const double scale = steppedLayoutScale(layoutScale(), delta);
    if (scale == layoutScale()) {
        return;
    }
    layoutScale() = scale;
    writeLayoutScale(kLayoutScaleFile, scale);

    RECT old{};
    GetWindowRect(window, &old);
    const int centreX = old.left + (old.right - old.left) / 2;
    const int centreY = old.top + (old.bottom - old.top) / 2;
    const LayoutSize size =
        initialWindowSize(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), scale);
    serveWaitingSteps(); // the system takes its time
    SetWindowPos(window, nullptr, centreX - size.width / 2, centreY - size.height / 2, size.width,
                 size.height, SWP_NOZORDER);
}

LRESULT keyDown(HWND window, WPARAM key, LPARAM lParam) {
    if (key == VK_ESCAPE) {
        if (cardPanel().cardsDialogOpen) {
            closeCardsDialog();
        } else {
            DestroyWindow(window);
        }
        return 0;
    }
    if (GetKeyState(VK_CONTROL) < 0) {
        if (key == VK_ADD || key == VK_OEM_PLUS) {
            changeLayoutScale(window, kLayoutScaleStep);
            return 0;
        }
        if (key == VK_SUBTRACT || key == VK_OEM_MINUS) {
            changeLayoutScale(window, -kLayoutScaleStep);
            return 0;
        }
    }
    return DefWindowProcW(window, WM_KEYDOWN, key, lParam);
}

LRESULT timer(HWND window, WPARAM id, LPARAM lParam) {
    switch (static_cast<WindowTimer>(id)) {
    case WindowTimer::powerOff:
        stopTimer(WindowTimer::powerOff);
        DestroyWindow(window);
        return 0;
    case WindowTimer::cardInsertion:
        cardInsertionTick();
        if (cardPanel().cardInserted) {
            endGlides(); // or a controller's last word would undo the card
        }
        return 0;
    case WindowTimer::midiGlide:
        midiSmoothingTick();
        return 0;
    default:
        return DefWindowProcW(window, WM_TIMER, id, lParam);
    }
}

void askTitle(HWND window) {
    const int slot = cardPanel().dialogSlot;
    const std::optional<std::wstring> title =
        askCardTitle(window, cardLabel(cardPanel().slots[static_cast<std::size_t>(slot)], slot));
    if (title.has_value()) {
        setCardTitle(*title);
    }
}

void askTempo(HWND window) {
    if (sequencer().externalSync) {
        MessageBoxW(window, L"Tempo is currently controlled by external MIDI Clock.", L"Set Tempo",
                    MB_OK | MB_ICONINFORMATION);
        return;
    }
    double bpm = 0.0;
    if (runTempoDialog(window, sequencer().bpm, bpm)) {
        setTempoBpm(bpm);
    }
}

// False when nothing of the strip or the card dialog lies under the point.
bool pressStripOrDialog(HWND window, PixelPoint point) {
    switch (panelCommandAt(point, cardPanelRects(clientSize(window)))) {
    case PanelCommand::none:
        return false;
    case PanelCommand::cards:
        toggleCardsDialog();
        break;
    case PanelCommand::previousCard:
        showPreviousCard();
        break;
    case PanelCommand::nextCard:
        showNextCard();
        break;
    case PanelCommand::title:
        askTitle(window);
        break;
    case PanelCommand::save:
        saveCard();
        break;
    case PanelCommand::load:
        beginCardInsertion(clientSize(window));
        break;
    case PanelCommand::cancel:
        closeCardsDialog();
        break;
    case PanelCommand::midi:
        showMidiDeviceWindow(window);
        break;
    case PanelCommand::info:
        showAboutWindow(window);
        break;
    case PanelCommand::tempo:
        askTempo(window);
        break;
    case PanelCommand::effects:
        showEffectsWindow(window);
        break;
    case PanelCommand::swallowed:
        break;
    }
    return true;
}

// The first that takes the press ends it.
void buttonDown(HWND window, PixelPoint point) {
    if (pressStripOrDialog(window, point)) {
        return;
    }
    const double scale = windowScale(window);
    if (learnClick(point, scale)) {
        return;
    }
    if (beginRotaryDrag(point, scale) || beginSliderDrag(point, scale)) {
        SetCapture(window);
        return;
    }
    switch (pressControl(point, scale)) {
    case Press::acted:
        return;
    case Press::held:
        SetCapture(window);
        return;
    case Press::none:
        windowDrag() = {true, point.x, point.y};
        SetCapture(window);
        return;
    }
}

void mouseMove(HWND window, PixelPoint point) {
    if (panelState().rotaryDragIndex != kNoControl) {
        dragRotary(point.y, shiftIsDown());
    } else if (panelState().sliderDragIndex != kNoControl) {
        dragSlider(point.x, windowScale(window));
    } else if (windowDrag().windowDragging) {
        RECT place{};
        GetWindowRect(window, &place);
        SetWindowPos(window, nullptr, place.left - windowDrag().windowDragAnchorX + point.x,
                     place.top - windowDrag().windowDragAnchorY + point.y, 0, 0,
                     SWP_NOSIZE | SWP_NOZORDER);
    }
}

void buttonUp() {
    releaseControls();
    if (panelState().rotaryDragIndex != kNoControl) {
        endRotaryDrag();
        ReleaseCapture();
    }
    if (panelState().sliderDragIndex != kNoControl) {
        endSliderDrag();
        ReleaseCapture();
    }
    windowDrag().windowDragging = false;
    ReleaseCapture();
}

LRESULT mouseWheel(HWND window, WPARAM wParam, LPARAM lParam) {
    const int delta = GET_WHEEL_DELTA_WPARAM(wParam);
    const WORD keys = GET_KEYSTATE_WPARAM(wParam);
    if ((keys & MK_CONTROL) != 0) {
        hideInsertedCard();
        changeLayoutScale(window, delta > 0 ? kLayoutScaleStep : -kLayoutScaleStep);
        return 0;
    }
    POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    ScreenToClient(window, &point);
    if (turnWheel({point.x, point.y}, windowScale(window), delta, (keys & MK_SHIFT) != 0)) {
        return 0;
    }
    return DefWindowProcW(window, WM_MOUSEWHEEL, wParam, lParam);
}

void midiNotify(WPARAM wParam, LPARAM lParam) {
    switch (wParam) {
    case kMidiCmdConnectionChanged:
        if (lParam == 0) {
            midiPortClosed();
        } else {
            midiPortOpened(midiInputContext().deviceName);
        }
        return;
    case kMidiCmdLearn:
        armMidiLearn();
        return;
    case kMidiCmdClearMappings:
        clearMidiMappings();
        return;
    case kMidiCmdInternalClock:
        followInternalClock();
        return;
    case kMidiCmdMidiClock:
        followMidiClock();
        return;
    default:
        handleMidiMessage(static_cast<std::uint32_t>(wParam));
    }
}

// Ends the process should its end take longer: a driver that has stopped answering may never return
// from a call. Cards and settings are on the disk by then, so nothing is lost.
class LongestShutdown {
public:
    LongestShutdown() {
        CreateTimerQueueTimer(&timer_, nullptr, endProcess, nullptr, kMs, 0, WT_EXECUTEONLYONCE);
    }
    ~LongestShutdown() { DeleteTimerQueueTimer(nullptr, timer_, INVALID_HANDLE_VALUE); }
    LongestShutdown(const LongestShutdown&) = delete;
    LongestShutdown& operator=(const LongestShutdown&) = delete;

private:
    static constexpr DWORD kMs = 1000;

    static void CALLBACK endProcess(void* /*nothing*/, BOOLEAN /*fired*/) {
        TerminateProcess(GetCurrentProcess(), 0); // the drivers are not asked once more
    }

    HANDLE timer_ = nullptr;
};

void shutDown(HWND window) {
    setMainWindow(nullptr);
    finishSaving();
    const LongestShutdown limit;
    destroyAboutWindow();
    clockStop();
    KillTimer(window, static_cast<UINT_PTR>(WindowTimer::powerOff));
    closeMidiInput(midiInputContext());
    clockShutdown();
    waveOut().stop();
    PostQuitMessage(0);
}

} // namespace

double& layoutScale() noexcept {
    static double scale = 1.0;
    return scale;
}

LRESULT CALLBACK mainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        paintPanel(window);
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_SIZE:
        serveWaitingSteps(); // one that is painted rebuilds the background, too
        if (!backgroundFits(clientSize(window))) {
            rebuildBackgroundCache(window);
        }
        serveWaitingSteps();
        placeReaderCard(clientSize(window));
        InvalidateRect(window, nullptr, FALSE);
        return 0;
    case WM_KEYDOWN:
        return keyDown(window, wParam, lParam);
    case WM_TIMER:
        return timer(window, wParam, lParam);
    case WM_LBUTTONDOWN:
        buttonDown(window, pointOf(lParam));
        return 0;
    case WM_MOUSEMOVE:
        mouseMove(window, pointOf(lParam));
        return 0;
    case WM_LBUTTONUP:
        buttonUp();
        return 0;
    case WM_MOUSEWHEEL:
        return mouseWheel(window, wParam, lParam);
    case kMidiNotifyMessage:
        serveWaitingSteps(); // before a flood of controllers
        midiNotify(wParam, lParam);
        return 0;
    case kStepTickMessage:
        onStepTick();
        return 0;
    case kCardProblemMessage:
        showSavingProblems();
        return 0;
    case WM_ENDSESSION: // after the return the process may end at any time
        if (wParam != FALSE) {
            DestroyWindow(window);
        }
        return 0;
    case WM_DESTROY:
        shutDown(window);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

} // namespace percussomatic
