// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace percussomatic {

// Updates of the tool windows. No-ops if the window has not been created. GUI thread.

// MIDI window: the clock source of the radio buttons, and the sync line.
void showSyncStatus(bool externalSync, const std::wstring& text);

// MIDI window: the learn status line.
void showLearnStatus(const std::wstring& text);

// Effects window: shows the current settings of the engine and the selected preset.
void refreshFromEngine();

} // namespace percussomatic
