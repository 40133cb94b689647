// The instrument with a log of its steps, for step_times.py: when the clock posted each of them and
// when the panel had served it, in nanoseconds. Left in steps.txt at the end.

#include "sequencer/system.h"
#include "win32/app/main_window.h"
#include "win32/app/start_up.h"
#include "win32/windows/message_loop.h"

#include <windows.h>

#include <cstdio>
#include <mutex>
#include <vector>

namespace percussomatic {

// What the clock of this program calls in place of postStepTick().
void loggedPost(WindowHandle window) noexcept;

namespace {

std::mutex mutex;
std::vector<std::int64_t> posted, served;
WNDPROC panelProc = nullptr;

LRESULT CALLBACK logged(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = CallWindowProcW(panelProc, window, message, wParam, lParam);
    if (message == kStepTickMessage) {
        served.push_back(counterNs());
    }
    return result;
}

void CALLBACK onceStarted(HWND, UINT, UINT_PTR timer, DWORD) {
    KillTimer(nullptr, timer);
    const HWND panel = static_cast<HWND>(mainWindow());
    panelProc = reinterpret_cast<WNDPROC>(GetWindowLongPtrW(panel, GWLP_WNDPROC));
    SetWindowLongPtrW(panel, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(logged));
}

} // namespace

void loggedPost(WindowHandle window) noexcept {
    const std::int64_t now = counterNs();
    postStepTick(window);
    const std::lock_guard lock(mutex);
    posted.push_back(now);
}

} // namespace percussomatic

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int) {
    using namespace percussomatic;
    posted.reserve(100'000);
    served.reserve(100'000);
    SetTimer(nullptr, 0, 500, onceStarted);
    const int code = runPercussomatic(instance);
    if (std::FILE* file = std::fopen("steps.txt", "w"); file != nullptr) {
        for (std::size_t i = 0; i < posted.size() && i < served.size(); ++i) {
            std::fprintf(file, "%lld %lld\n", static_cast<long long>(posted[i]),
                         static_cast<long long>(served[i]));
        }
        std::fclose(file);
    }
    return code;
}
