#pragma once

#include <windows.h>

#include <optional>
#include <string>

namespace percussomatic {

// Asks for a card's title, with the present one selected for typing over. Nothing when it was
// cancelled. Modal over the owner. GUI thread.
std::optional<std::wstring> askCardTitle(HWND owner, const std::wstring& title);

} // namespace percussomatic
