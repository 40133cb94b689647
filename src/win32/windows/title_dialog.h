// SPDX-License-Identifier: MIT
#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace percussomatic {

// Asks for a card's title, modal over the owner; the current title is selected. Returns nullopt if
// the user cancels or the window cannot be created. GUI thread.
std::optional<std::wstring> askCardTitle(HWND owner, const std::wstring& title);

} // namespace percussomatic
