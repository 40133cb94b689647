#include "cards/card_saver.h"

#include "app/main_window.h"
#include "cards/card_file.h"
#include "sequencer/system.h"

#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace percussomatic {

namespace {

// The last save; it waits for the one before.
std::jthread& lastSave() noexcept {
    static std::jthread thread;
    return thread;
}

// What the saves have to tell, until the GUI thread has shown it.
struct Problems {
    std::mutex mutex;
    std::vector<std::wstring> texts;
};

Problems& problems() noexcept {
    static Problems instance;
    return instance;
}

void save(const std::filesystem::path& path, const std::string& text, HWND window) {
    const SaveResult result = saveCardFile(path, text);
    if (result != SaveResult::saved) {
        const std::lock_guard lock(problems().mutex);
        problems().texts.push_back(saveFaultText(result, path));
        PostMessageW(window, kCardProblemMessage, 0, 0);
    }
}

} // namespace

void saveCardLater(const std::filesystem::path& path, const std::string& text) {
    const HWND window = static_cast<HWND>(mainWindow());
    try {
        lastSave() = std::jthread([before = std::move(lastSave()), path, text, window]() mutable {
            before = {}; // joins
            save(path, text, window);
        });
    } catch (const std::system_error&) { // no thread to be had
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
