// SPDX-License-Identifier: MIT
#include "user_messages.h"

#include "main_window_handle.h"

#include <windows.h>

namespace percussomatic {

void showProblem(const std::wstring& text) {
    MessageBoxW(static_cast<HWND>(mainWindow()), text.c_str(), L"Percussomatic",
                MB_OK | MB_ICONWARNING);
}

} // namespace percussomatic
