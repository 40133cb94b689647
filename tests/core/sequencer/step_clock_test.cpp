// SPDX-License-Identifier: MIT
#include "sequencer/step_clock.h"

#include "support/fake_system.h"
#include "support/virtual_clock.h"
#include "system_time.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace percussomatic {
namespace {

using Ns = std::vector<std::int64_t>;

constexpr std::int64_t kStep = 125 * kNsPerMs; // at 120 BPM

TEST(StepClockArithmetic, IntervalIsASixteenthNote) {
    EXPECT_DOUBLE_EQ(stepIntervalNs(240.0), 62.5e6);
    for (const double bpm : {1.0, 0.99, -60.0, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_DOUBLE_EQ(stepIntervalNs(bpm), 15e9) << bpm;
    }
}

Ns takeTicks() {
    Ns ticks;
    for (const PostedTick& tick : takePostedTicks()) {
        ticks.push_back(tick.atNs);
    }
    return ticks;
}

Ns inMs(Ns ms) {
    std::ranges::for_each(ms,
                          [](std::int64_t& each) { each *= each == kFailedPost ? 1 : kNsPerMs; });
    return ms;
}

TEST(StepClockThread, LatenessDoesNotShiftTheGridUntilAWholeStepIsLost) {
    const auto expectTicks = [](const Ns& lateMs, const Ns& postingMs, const Ns& tickMs,
                                std::uint32_t dropped) { // per wait, per post
        const std::uint32_t droppedBefore = droppedStepCount();
        const FreshInstrument instrument;
        scriptLateness(inMs(lateMs), inMs(postingMs));
        runClock(120.0, counterNs());
        passTimeTo(tickMs.back() * kNsPerMs);
        EXPECT_EQ(takeTicks(), inMs(tickMs));
        EXPECT_EQ(droppedStepCount() - droppedBefore, dropped);
    };
    expectTicks({40, 0, 100}, {}, {165, 250, 475, 500}, 0);     // late sometimes
    expectTicks({90, 90, 90, 90}, {}, {215, 340, 465, 590}, 0); // always late
    expectTicks({125}, {}, {250, 250, 375, 500}, 0); // one whole step: the next follows immediately
    expectTicks({126}, {}, {251, 376, 501}, 1);      // more: steps are dropped
    expectTicks({0, 1000}, {}, {125, 1250, 1375}, 8);
    expectTicks({}, {100, 130}, {125, 250, 505, 630}, 1); // slow posts count as lateness
    expectTicks({}, {0, kFailedPost}, {125, 375}, 1);     // the message queue is full
}

TEST(StepClockThread, OnlyStopAndStartBeginANewGrid) {
    const FreshInstrument instrument;
    runClock(120.0, counterNs());
    passTimeTo(100 * kNsPerMs);
    runClock(120.0, counterNs());
    passTimeTo(150 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({125}));
    for (int restart = 0; restart < 100; ++restart) { // before the thread has woken up
        clockStop();
        runClock(240.0, counterNs());
    }
    passTimeTo(280 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({213, 275}));
    clockStop();
    passTimeTo(10'000 * kNsPerMs);
    EXPECT_EQ(takeTicks(), Ns{});
    EXPECT_EQ(clockThreadCount(), 1);
}

TEST(StepClockThread, TicksCarryTheirDeadlineUntilTheClockIsStopped) {
    const FreshInstrument instrument;
    const auto takeDeadlines = [] {
        Ns deadlines;
        while (const auto deadline = takeDeadline()) {
            deadlines.push_back(*deadline);
        }
        return deadlines;
    };
    scriptLateness(inMs({40, 0, 100}), inMs({0, 0, kFailedPost}));
    passTimeTo(10 * kNsPerMs);
    runClock(120.0, 0);
    passTimeTo(500 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({165, 250, 500}));
    EXPECT_EQ(takeDeadlines(), inMs({125, 250, 500}));
    passTimeTo(60 * kStep);
    EXPECT_EQ(takeDeadlines().size(), 32u) << "56 ticks are waiting";
    passTimeTo(61 * kStep);
    clockStop();
    EXPECT_EQ(takeDeadlines(), Ns{});
}

TEST(StepClockThread, TempoChangeTakesEffectFromTheNextInterval) {
    const FreshInstrument instrument;
    runClock(120.0, counterNs());
    passTimeTo(kStep - 1);
    setClockTempo(40.0);
    passTimeTo(kStep + 10 * kNsPerMs);
    setClockTempo(240.0); // the interval that has begun keeps its 375 ms
    passTimeTo(630 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({125, 500, 563, 625}));
}

TEST(StepClockThread, ShutdownEndsTheThreadUntilTheNextStart) {
    const FreshInstrument instrument;
    clockShutdown(); // no-op before the first start
    runClock(120.0, counterNs());
    clockShutdown();
    EXPECT_EQ(clockThreadCount(), 0);
    runClock(120.0, counterNs());
    passTimeTo(kStep);
    EXPECT_EQ(takeTicks(), Ns{kStep});
    clockShutdown();
    passTimeTo(1000 * kStep);
    EXPECT_EQ(takeTicks(), Ns{});
    EXPECT_EQ(clockThreadCount(), 0);
}

} // namespace
} // namespace percussomatic
