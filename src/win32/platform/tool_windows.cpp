// SPDX-License-Identifier: MIT
#include "tool_windows.h"

#include "win32/windows/effects_window.h"
#include "win32/windows/midi_device_window.h"

namespace percussomatic {

void showSyncStatus(bool externalSync, const std::wstring& text) {
    showSyncLine(externalSync, text);
}

void showLearnStatus(const std::wstring& text) {
    showLearnLine(text);
}

void refreshFromEngine() {
    refreshEffectsWindow();
}

} // namespace percussomatic
