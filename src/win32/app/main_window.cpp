// SPDX-License-Identifier: MIT
#include "win32/app/main_window.h"

#include "card_saving.h"
#include "cards/card_panel.h"
#include "input/panel_input.h"
#include "midi/midi_clock.h"
#include "midi/midi_connection.h"
#include "midi/midi_learn.h"
#include "midi/midi_message.h"
#include "panel/layout_scale.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "win32/audio/wave_out.h"
#include "win32/messages.h"
#include "win32/midi/midi_input.h"
#include "win32/platform/main_window.h"
#include "win32/view/panel_rendering.h"
#include "win32/windows/about_window.h"
#include "win32/windows/effects_window.h"
#include "win32/windows/message_loop.h"
#include "win32/windows/midi_device_window.h"
#include "win32/windows/tempo_dialog.h"
#include "win32/windows/title_dialog.h"

#include <windowsx.h>

#include <dbt.h>

namespace percussomatic {

namespace {

PixelPoint pointOf(LPARAM lParam) noexcept {
    return {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
}

Key keyOf(WPARAM virtualKey) noexcept {
    switch (virtualKey) {
    case VK_ESCAPE:
        return Key::escape;
    case VK_ADD:
    case VK_OEM_PLUS:
        return Key::plus;
    case VK_SUBTRACT:
    case VK_OEM_MINUS:
        return Key::minus;
    default:
        return Key::other;
    }
}

// Whether Shift or Control was down when the message being handled was posted.
bool isDown(int virtualKey) noexcept {
    return GetKeyState(virtualKey) < 0;
}

void moveWindow(HWND window, PixelPoint distance) {
    RECT place{};
    GetWindowRect(window, &place);
    SetWindowPos(window, nullptr, place.left + distance.x, place.top + distance.y, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER);
}

void resizeWindow(HWND window) {
    RECT old{};
    GetWindowRect(window, &old);
    const int centreX = old.left + (old.right - old.left) / 2;
    const int centreY = old.top + (old.bottom - old.top) / 2;
    const SIZE size = panelSizeAt(layoutScale());
    handlePendingSteps(); // resizing is slow
    SetWindowPos(window, nullptr, centreX - size.cx / 2, centreY - size.cy / 2, size.cx, size.cy,
                 SWP_NOZORDER);
}

void askTitle(HWND window) {
    if (const auto title = askCardTitle(window, shownCardLabel()); title.has_value()) {
        setCardTitle(*title);
    }
}

void askTempo(HWND window) {
    double bpm = 0.0;
    if (runTempoDialog(window, sequencer().bpm, bpm)) {
        setTempoBpm(bpm);
    }
}

void carryOut(HWND window, const InputResult& result) {
    switch (result.request) {
    case Request::none:
    case Request::defaultHandling: // see handled()
        return;
    case Request::captureMouse:
        SetCapture(window);
        return;
    case Request::releaseMouse:
        ReleaseCapture();
        return;
    case Request::moveWindow:
        moveWindow(window, result.distance);
        return;
    case Request::resizeWindow:
        resizeWindow(window);
        return;
    case Request::closeWindow:
        DestroyWindow(window);
        return;
    case Request::showEffects:
        showEffectsWindow(window);
        return;
    case Request::showMidi:
        showMidiDeviceWindow(window);
        return;
    case Request::showInfo:
        showAboutWindow(window);
        return;
    case Request::askTempo:
        askTempo(window);
        return;
    case Request::explainExternalTempo:
        MessageBoxW(window, L"Tempo is currently controlled by external MIDI Clock.", L"Set Tempo",
                    MB_OK | MB_ICONINFORMATION);
        return;
    case Request::askTitle:
        askTitle(window);
        return;
    }
}

// Carries out the request. False if the message is left to DefWindowProcW.
bool handled(HWND window, const InputResult& result) {
    carryOut(window, result);
    return result.request != Request::defaultHandling;
}

bool mouseWheel(HWND window, WPARAM wParam, LPARAM lParam) {
    const WORD keys = GET_KEYSTATE_WPARAM(wParam);
    POINT point{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)}; // screen coordinates
    ScreenToClient(window, &point);
    return handled(window, turnWheelAt({point.x, point.y}, clientSize(window),
                                       {.delta = GET_WHEEL_DELTA_WPARAM(wParam),
                                        .control = (keys & MK_CONTROL) != 0,
                                        .shift = (keys & MK_SHIFT) != 0}));
}

void midiNotify(WPARAM wParam, LPARAM lParam) {
    switch (wParam) {
    case kMidiCmdConnectionChanged:
        // The port may have been closed again since the message was posted.
        if (lParam == 0 || midiInputContext().input == nullptr) {
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

void resized(HWND window) {
    handlePendingSteps(); // may repaint and so rebuild the background already
    if (!backgroundFits(clientSize(window))) {
        rebuildBackgroundCache(window);
    }
    handlePendingSteps();
    placeReaderCard(clientSize(window));
    InvalidateRect(window, nullptr, FALSE);
}

// Terminates the process if shutdown takes too long: a call of a driver that has stopped
// responding may never return, but a slow one needs more than a second. Cards and settings have
// been written by then.
class ShutdownWatchdog {
public:
    ShutdownWatchdog() {
        CreateTimerQueueTimer(&timer_, nullptr, terminate, nullptr, kTimeoutMs, 0,
                              WT_EXECUTEONLYONCE);
    }
    ~ShutdownWatchdog() { DeleteTimerQueueTimer(nullptr, timer_, INVALID_HANDLE_VALUE); }
    ShutdownWatchdog(const ShutdownWatchdog&) = delete;
    ShutdownWatchdog& operator=(const ShutdownWatchdog&) = delete;

private:
    static constexpr DWORD kTimeoutMs = 1700;

    static void CALLBACK terminate(void* /*context*/, BOOLEAN /*fired*/) {
        TerminateProcess(GetCurrentProcess(), 0); // unlike ExitProcess, does not wait for drivers
    }

    HANDLE timer_ = nullptr;
};

// Silent before waiting for the disk, which may take long and end in a message box.
void shutDown(HWND window) {
    setMainWindow(nullptr);
    destroyAboutWindow();
    clockStop();
    KillTimer(window, static_cast<UINT_PTR>(WindowTimer::powerOff));
    switchSoundOff();
    finishSaving();
    const ShutdownWatchdog watchdog;
    closeMidiInput(midiInputContext());
    clockShutdown();
    waveOut().stop();
    PostQuitMessage(0);
}

} // namespace

SIZE panelSizeAt(double scale) noexcept {
    const Size size =
        initialWindowSize(GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN), scale);
    return {size.width, size.height};
}

LRESULT CALLBACK mainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
    case WM_PAINT:
        paintPanel(window);
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_SIZE:
        resized(window);
        return 0;
    case WM_KEYDOWN:
        if (handled(window, pressKey(keyOf(wParam), isDown(VK_CONTROL)))) {
            return 0;
        }
        break;
    case WM_TIMER:
        if (handled(window, fireTimer(static_cast<WindowTimer>(wParam)))) {
            return 0;
        }
        break;
    case WM_LBUTTONDOWN:
        carryOut(window, pressPanel(pointOf(lParam), clientSize(window)));
        return 0;
    case WM_MOUSEMOVE:
        carryOut(window, movePointer(pointOf(lParam), clientSize(window), isDown(VK_SHIFT)));
        return 0;
    case WM_LBUTTONUP:
        carryOut(window, releasePointer());
        return 0;
    case WM_CAPTURECHANGED: // another window or a message box has taken the mouse
        if (reinterpret_cast<HWND>(lParam) != window) {
            releasePointer();
        }
        return 0;
    case WM_MOUSEWHEEL:
        if (mouseWheel(window, wParam, lParam)) {
            return 0;
        }
        break;
    case kMidiNotifyMessage:
        if (mayFollowLaterSteps(static_cast<std::uint32_t>(wParam))) {
            handlePendingSteps(); // a flood of controller messages must not delay steps
        }
        midiNotify(wParam, lParam);
        return 0;
    case kStepTickMessage:
        onClockTick();
        return 0;
    case kCardProblemMessage:
        showSavingProblems();
        return 0;
    case WM_DEVICECHANGE:
        if (wParam == DBT_DEVNODES_CHANGED) {
            waveOut().deviceListChanged();
        }
        break;
    case WM_ENDSESSION: // the system may end the process as soon as this returns
        if (wParam != FALSE) {
            DestroyWindow(window);
        }
        return 0;
    case WM_DESTROY:
        shutDown(window);
        return 0;
    default:
        break;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace percussomatic
