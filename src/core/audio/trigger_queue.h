// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace percussomatic {

// A voice to start later.
struct TimedTrigger {
    std::int64_t dueNs = 0; // on the monotonic counter
    std::int32_t sampleIndex = -1;
    float gain = 0.0f;
};

// Pending triggers, ordered by due time; those due at the same time keep their order of arrival.
// Allocates no memory. Not thread-safe.
class TriggerQueue {
public:
    static constexpr std::size_t kCapacity = 64; // five full steps of twelve voices, and four more

    bool full() const noexcept { return count_ == kCapacity; }
    const TimedTrigger* begin() const noexcept { return triggers_.data(); }
    const TimedTrigger* end() const noexcept { return begin() + count_; }

    // The queue must not be full.
    void push(const TimedTrigger& trigger) noexcept {
        TimedTrigger* const last = triggers_.data() + count_++;
        TimedTrigger* const place =
            std::upper_bound(triggers_.data(), last, trigger,
                             [](const auto& a, const auto& b) { return a.dueNs < b.dueNs; });
        std::move_backward(place, last, last + 1);
        *place = trigger;
    }
    void popFront(std::size_t count) noexcept {
        std::move(begin() + count, end(), triggers_.data());
        count_ -= count;
    }
    void clear() noexcept { count_ = 0; }

private:
    std::array<TimedTrigger, kCapacity> triggers_{};
    std::size_t count_ = 0;
};

} // namespace percussomatic
