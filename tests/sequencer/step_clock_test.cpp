#include "sequencer/step_clock.h"

#include "support/recorded_system.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace percussomatic {
namespace {

using Ns = std::vector<std::int64_t>;

constexpr std::int64_t kStep = 125 * kNsPerMs; // at 120 BPM

TEST(StepClockArithmetic, IntervalIsASixteenthNote) {
    const struct {
        double bpm, ns;
    } cases[] = {
        {40.0, 375e6}, {240.0, 62.5e6}, {1.0, 15e9},
        {0.99, 15e9},  {-60.0, 15e9},   {std::numeric_limits<double>::quiet_NaN(), 15e9},
    };
    for (const auto& [bpm, ns] : cases) {
        EXPECT_DOUBLE_EQ(stepIntervalNs(bpm), ns) << bpm;
    }
}

TEST(StepClockArithmetic, GridStartsAnewOnlyAfterMoreThanOneInterval) {
    constexpr std::int64_t kDeadline = 1'000'000'000'000;
    const struct {
        std::int64_t late;
        double intervalNs;
        std::uint32_t dropped;
    } cases[] = {
        {0, 125e6, 0},
        {125'000'000, 125e6, 0},
        {125'000'001, 125e6, 1},
        {375'000'000, 125e6, 3},
        {7, 7.25, 0},
        {8, 7.25, 1},
        {-5, 125e6, 0},
    };
    for (const auto& [late, intervalNs, dropped] : cases) {
        SCOPED_TRACE(late);
        const std::int64_t now = kDeadline + late;
        EXPECT_EQ(nextGridBaseNs(now, kDeadline, intervalNs), dropped > 0 ? now : kDeadline);
        EXPECT_EQ(droppedSteps(now, kDeadline, intervalNs), dropped);
    }
}

TEST(StepClockArithmetic, WaitsAreRoundedUpAndNoLongerThanADay) {
    const struct {
        std::int64_t ns, ms;
    } cases[] = {
        {1, 1},
        {kNsPerMs, 1},
        {kNsPerMs + 1, 2},
        {std::numeric_limits<std::int64_t>::max(), 86'400'000},
    };
    for (const auto& [ns, ms] : cases) {
        EXPECT_EQ(waitMilliseconds(ns), ms) << ns;
    }
}

class StepClockTest : public testing::Test {
protected:
    static Ns takeTicks() {
        Ns ticks;
        for (const PostedTick& tick : takePostedTicks()) {
            ticks.push_back(tick.atNs);
        }
        return ticks;
    }

    static Ns inMs(Ns ms) {
        for (std::int64_t& each : ms) {
            each *= kNsPerMs;
        }
        return ms;
    }
};

TEST_F(StepClockTest, LatenessNeverShiftsTheGridUntilAWholeStepIsLost) {
    const struct {
        const char* what;
        Ns lateMs;    // per wait
        Ns postingMs; // per post
        Ns tickMs;
        std::uint32_t dropped = 0;
    } cases[] = {
        {"late now and then", {40, 0, 100}, {}, {165, 250, 475, 500}},
        {"always late", {90, 90, 90, 90}, {}, {215, 340, 465, 590}},
        {"one whole step late: it follows at once", {125}, {}, {250, 250, 375, 500}},
        {"more: lost steps stay lost", {126}, {}, {251, 376, 501}, 1},
        {"far more", {0, 1000}, {}, {125, 1250, 1375}, 8},
        {"slow posts count as lateness", {}, {100, 130}, {125, 250, 505, 630}, 1},
    };
    for (const auto& [what, lateMs, postingMs, tickMs, dropped] : cases) {
        SCOPED_TRACE(what);
        const std::uint32_t droppedBefore = droppedStepCount();
        const FreshInstrument instrument;
        scriptLateness(inMs(lateMs));
        scriptPosting(inMs(postingMs));
        runClock(120.0);
        passTimeTo(tickMs.back() * kNsPerMs);
        EXPECT_EQ(takeTicks(), inMs(tickMs));
        EXPECT_EQ(droppedStepCount() - droppedBefore, dropped);
    }
}

TEST_F(StepClockTest, ThousandUnevenStepsEndOnTheGrid) {
    constexpr int kSteps = 1000;
    for (const double bpm : {40.0, 97.3, 130.0, 240.0}) {
        SCOPED_TRACE(bpm);
        const FreshInstrument instrument;
        Ns lateness;
        for (int step = 0; step < kSteps; ++step) {
            lateness.push_back(step * 7919 % 21 * kNsPerMs); // up to 20 ms
        }
        scriptLateness(lateness);
        const double intervalNs = 15e9 / bpm;
        runClock(bpm);
        passTimeTo(std::llround(intervalNs * (kSteps + 0.5)));
        const Ns ticks = takeTicks();
        ASSERT_EQ(ticks.size(), std::size_t{kSteps});
        for (std::size_t step = 0; step < ticks.size(); ++step) {
            // A grid of whole nanoseconds loses less than one of them at every step.
            const double ideal = intervalNs * static_cast<double>(step + 1);
            const double late = static_cast<double>(ticks[step]) - ideal;
            ASSERT_GE(late, -static_cast<double>(step + 1)) << step;
            ASSERT_LT(late, 21e6) << step; // rounded up to whole milliseconds
        }
    }
}

TEST_F(StepClockTest, StartWhileTickingKeepsTheGridAndStopBeginsANewOne) {
    const FreshInstrument instrument;
    runClock(120.0);
    passTimeTo(100 * kNsPerMs);
    runClock(120.0); // goes on
    passTimeTo(225 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({125}));

    clockStop(); // and on again before the thread has woken
    runClock(120.0);
    passTimeTo(340 * kNsPerMs);
    EXPECT_EQ(takeTicks(), Ns{});
    passTimeTo(360 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({350}));

    clockStop();
    passTimeTo(10'000 * kNsPerMs);
    EXPECT_EQ(takeTicks(), Ns{});
    runClock(240.0);
    passTimeTo(10'130 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({10'063, 10'125}));

    for (int restart = 0; restart < 100; ++restart) {
        clockStop();
        runClock(120.0);
    }
    passTimeTo(10'255 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({10'255}));
    EXPECT_EQ(clockThreads(), (ClockThreads{1, 0}));
}

TEST_F(StepClockTest, TempoChangeTakesEffectFromTheNextInterval) {
    const FreshInstrument instrument;
    runClock(120.0);
    passTimeTo(kStep - 1);
    setClockTempo(40.0);
    passTimeTo(kStep + 10 * kNsPerMs);
    setClockTempo(240.0); // 500 ms stands; then every 62.5
    passTimeTo(630 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({125, 500, 563, 625}));
}

TEST_F(StepClockTest, ShutdownEndsTheThreadWhateverItDoes) {
    void (*const cases[])() = {
        [] { runClock(120.0); }, // started this moment
        [] {
            runClock(1.0); // waiting for a step
            passTimeTo(kStep);
        },
        [] {
            runClock(120.0);
            passTimeTo(kStep);
            clockStop();
        },
    };
    for (const auto& before : cases) {
        const FreshInstrument instrument;
        clockShutdown(); // before the first start it is no harm, nor is a second one
        before();
        clockShutdown();
        takePostedTicks();
        passTimeTo(1000 * kStep);
        EXPECT_EQ(takePostedTicks(), std::vector<PostedTick>{});
        EXPECT_EQ(clockThreads(), (ClockThreads{1, 1}));
        clockShutdown();
    }
}

} // namespace
} // namespace percussomatic
