// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace percussomatic {

// What the core tells the tool windows. No-ops for a window that has not been made yet. GUI thread.

// MIDI window: which clock leads, as the radio buttons and the sync line show it.
void showSyncStatus(bool externalSync, const std::wstring& text);

// MIDI window: the learn line.
void showLearnStatus(const std::wstring& text);

// Effects window: all settings of the engine and the chosen character.
void refreshFromEngine();

} // namespace percussomatic
