#include "midi/midi_device_window.h"

#include "sequencer/system.h"

namespace percussomatic {

MidiDeviceWindow& midiDeviceWindow() noexcept {
    static MidiDeviceWindow window;
    return window;
}

void showSyncStatus(bool externalSync, const std::wstring& text) {
    const MidiDeviceWindow& shown = midiDeviceWindow();
    const auto check = [](HWND button, bool on) {
        if (button != nullptr) {
            SendMessageW(button, BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED, 0);
        }
    };
    check(shown.internalSync, !externalSync);
    check(shown.midiSync, externalSync);
    if (shown.syncStatus != nullptr) {
        SetWindowTextW(shown.syncStatus, text.c_str());
    }
}

} // namespace percussomatic
