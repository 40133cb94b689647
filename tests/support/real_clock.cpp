#include "support/real_clock.h"

#include "sequencer/system.h"

#include <utility>

namespace percussomatic {

namespace {

struct PostedTimes {
    std::mutex mutex;
    std::condition_variable more;
    std::vector<std::int64_t> ns; // guarded by mutex
};

PostedTimes& postedTimes() {
    static PostedTimes times;
    return times;
}

} // namespace

std::int64_t counterNs() noexcept {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

void postStepTick(WindowHandle) noexcept {
    const std::lock_guard lock(postedTimes().mutex);
    postedTimes().ns.push_back(counterNs());
    postedTimes().more.notify_all();
}

void beginClockThread() noexcept {}

void endClockThread() noexcept {}

void waitForWake(std::condition_variable& wake, std::unique_lock<std::mutex>& lock,
                 std::int64_t milliseconds) {
    wake.wait_for(lock, std::chrono::milliseconds(milliseconds));
}

std::vector<std::int64_t> takeTicks(std::size_t count, std::chrono::milliseconds atMost) {
    PostedTimes& times = postedTimes();
    std::unique_lock lock(times.mutex);
    times.more.wait_for(lock, atMost, [&] { return times.ns.size() >= count; });
    return std::exchange(times.ns, {});
}

} // namespace percussomatic
