// SPDX-License-Identifier: MIT
#include "card_saving.h"

#include "cards/card_file.h"
#include "main_window_handle.h"
#include "user_messages.h"
#include "win32/messages.h"

#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace percussomatic {

namespace {

// The most recent save; each save first joins the one before it.
std::jthread& lastSave() noexcept {
    static std::jthread thread;
    return thread;
}

// Failed saves that have not been reported to the user yet.
struct Problems {
    std::mutex mutex;
    std::vector<std::wstring> texts; // guarded by mutex
};

Problems& problems() noexcept {
    static Problems instance;
    return instance;
}

void save(const std::filesystem::path& path, const std::string& text, HWND window) {
    const SaveResult result = saveCardFile(path, text);
    if (result != SaveResult::saved) {
        const std::lock_guard lock(problems().mutex);
        problems().texts.push_back(saveErrorText(result, path));
        PostMessageW(window, kCardProblemMessage, 0, 0);
    }
}

} // namespace

void saveCardLater(const std::filesystem::path& path, const std::string& text) {
    const HWND window = static_cast<HWND>(mainWindow());
    try {
        lastSave() = std::jthread([previous = std::move(lastSave()), path, text, window]() mutable {
            previous = {}; // joins
            save(path, text, window);
        });
    } catch (const std::system_error&) { // no thread available
        save(path, text, window);
    }
}

void showSavingProblems() {
    std::vector<std::wstring> texts;
    {
        const std::lock_guard lock(problems().mutex);
        texts.swap(problems().texts);
    }
    for (const std::wstring& text : texts) {
        showProblem(text);
    }
}

void finishSaving() {
    lastSave() = {}; // joins
    showSavingProblems();
}

} // namespace percussomatic
