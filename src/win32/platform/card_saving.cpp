// SPDX-License-Identifier: MIT
#include "card_saving.h"

#include "cards/card_file.h"
#include "main_window_handle.h"
#include "user_messages.h"
#include "win32/messages.h"

#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace percussomatic {

namespace {

constexpr DWORD kMaxFinishMs = 10000;

// The queue of cards and the thread that saves them. Never destroyed, because a thread that waits
// for a disk that has stopped responding may use it until the process ends.
struct Saver {
    std::mutex mutex;
    std::deque<PendingCard> queue;      // guarded by mutex; the first is being saved
    std::vector<std::wstring> problems; // guarded by mutex; not yet shown
    CardWriter writer;                  // saving thread, or the GUI thread if there is none
    HWND window = nullptr;              // guarded by mutex; notified of problems
    bool threadRuns = false;            // GUI thread only
    // Auto-reset: a card was queued. Manual reset: the queue is empty.
    HANDLE queued = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    HANDLE idle = CreateEventW(nullptr, TRUE, TRUE, nullptr);
};

Saver& saver() {
    static Saver& instance = *new Saver;
    return instance;
}

// Saves the cards in the queue.
void drainQueue(Saver& saver) {
    std::unique_lock lock(saver.mutex);
    while (!saver.queue.empty()) {
        const PendingCard card = saver.queue.front();
        lock.unlock();
        std::wstring problem = writeCard(saver.writer, card);
        lock.lock();
        saver.queue.pop_front();
        if (!problem.empty()) {
            saver.problems.push_back(std::move(problem));
            PostMessageW(saver.window, kCardProblemMessage, 0, 0);
        }
    }
    SetEvent(saver.idle);
}

void runSavingThread(Saver& saver) {
    while (WaitForSingleObject(saver.queued, INFINITE) == WAIT_OBJECT_0) {
        drainQueue(saver);
    }
}

// False if the system has no thread left.
bool ensureThread(Saver& saver) {
    if (!saver.threadRuns) {
        try {
            std::thread([&saver] { runSavingThread(saver); }).detach();
            saver.threadRuns = true;
        } catch (const std::system_error&) {
            return false;
        }
    }
    return true;
}

} // namespace

void saveCardLater(const PendingCard& card) {
    Saver& all = saver();
    {
        const std::lock_guard lock(all.mutex);
        all.window = static_cast<HWND>(mainWindow());
        all.queue.push_back(card);
        ResetEvent(all.idle);
    }
    if (ensureThread(all)) {
        SetEvent(all.queued);
    } else {
        drainQueue(all);
    }
}

void showSavingProblems() {
    std::vector<std::wstring> texts;
    {
        const std::lock_guard lock(saver().mutex);
        texts.swap(saver().problems);
    }
    for (const std::wstring& text : texts) {
        showProblem(text);
    }
}

void finishSaving() {
    const bool finished = WaitForSingleObject(saver().idle, kMaxFinishMs) == WAIT_OBJECT_0;
    showSavingProblems();
    if (!finished) {
        showProblem(L"The disk is not responding. The last cards may not have been saved.");
    }
}

} // namespace percussomatic
