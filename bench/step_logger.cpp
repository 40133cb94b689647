// SPDX-License-Identifier: MIT
// The program with a log of its steps, for step_times.py: when the step clock posted each step and
// when the panel had finished handling it, in nanoseconds. Writes steps.txt on exit.

#include "clock_thread.h"
#include "system_time.h"
#include "win32/app/main_window.h"
#include "win32/app/start_up.h"
#include "win32/messages.h"

#include <windows.h>

#include <cstdio>
#include <mutex>
#include <vector>

namespace percussomatic {

// The step clock of this program is compiled to call this instead of postStepTick().
bool loggedPost(WindowHandle window) noexcept;

namespace {

std::mutex mutex;
std::vector<std::int64_t> postedNs;  // guarded by mutex
std::vector<std::int64_t> handledNs; // GUI thread only
WNDPROC panelProc = nullptr;

LRESULT CALLBACK loggedProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = CallWindowProcW(panelProc, window, message, wParam, lParam);
    if (message == kStepTickMessage) {
        handledNs.push_back(counterNs());
    }
    return result;
}

void CALLBACK onStarted(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    const HWND panel = static_cast<HWND>(mainWindow());
    panelProc = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(panel, GWLP_WNDPROC));
    SetWindowLongPtrW(panel, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(loggedProc));
}

} // namespace

bool loggedPost(WindowHandle window) noexcept {
    const std::int64_t now = counterNs();
    const bool posted = postStepTick(window);
    const std::lock_guard lock(mutex);
    postedNs.push_back(now);
    return posted;
}

} // namespace percussomatic

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    using namespace percussomatic;
    postedNs.reserve(100'000);
    handledNs.reserve(100'000);
    SetTimer(nullptr, 0, 500, onStarted);
    const int code = runPercussomatic(instance);
    if (std::FILE* file = std::fopen("steps.txt", "w"); file != nullptr) {
        for (std::size_t i = 0; i < postedNs.size() && i < handledNs.size(); ++i) {
            std::fprintf(file, "%lld %lld\n", static_cast<long long>(postedNs[i]),
                         static_cast<long long>(handledNs[i]));
        }
        std::fclose(file);
    }
    return code;
}
