#include "sequencer/step_clock.h"

#include "support/fake_system.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

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

TEST(StepClockArithmetic, GridStartsAnewOnlyAfterMoreThanOneInterval) {
    constexpr std::int64_t kDeadline = 1'000'000'000'000;
    const struct {
        std::int64_t late;
        double intervalNs;
        std::uint32_t dropped;
    } cases[] = {{0, 125e6, 0},
                 {125'000'000, 125e6, 0},
                 {125'000'001, 125e6, 1},
                 {375'000'000, 125e6, 3},
                 {7, 7.25, 0},
                 {8, 7.25, 1},
                 {-5, 125e6, 0}};
    for (const auto& [late, intervalNs, dropped] : cases) {
        SCOPED_TRACE(late);
        const std::int64_t now = kDeadline + late;
        EXPECT_EQ(nextGridBaseNs(now, kDeadline, intervalNs), dropped > 0 ? now : kDeadline);
        EXPECT_EQ(droppedSteps(now, kDeadline, intervalNs), dropped);
    }
}

TEST(StepClockArithmetic, WaitsAreRoundedUpAndNoLongerThanADay) {
    EXPECT_EQ(waitMilliseconds(1), 1);
    EXPECT_EQ(waitMilliseconds(kNsPerMs), 1);
    EXPECT_EQ(waitMilliseconds(kNsPerMs + 1), 2);
    EXPECT_EQ(waitMilliseconds(std::numeric_limits<std::int64_t>::max()), 86'400'000);
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
    const auto expectTicks = [](const Ns& lateMs, const Ns& postingMs, const Ns& tickMs,
                                std::uint32_t dropped) { // per wait, per post
        const std::uint32_t droppedBefore = droppedStepCount();
        const FreshInstrument instrument;
        scriptLateness(inMs(lateMs));
        scriptPosting(inMs(postingMs));
        runClock(120.0);
        passTimeTo(tickMs.back() * kNsPerMs);
        EXPECT_EQ(takeTicks(), inMs(tickMs));
        EXPECT_EQ(droppedStepCount() - droppedBefore, dropped);
    };
    expectTicks({40, 0, 100}, {}, {165, 250, 475, 500}, 0);     // late now and then
    expectTicks({90, 90, 90, 90}, {}, {215, 340, 465, 590}, 0); // always late
    expectTicks({125}, {}, {250, 250, 375, 500}, 0); // one whole step: it follows at once
    expectTicks({126}, {}, {251, 376, 501}, 1);      // more: lost steps stay lost
    expectTicks({0, 1000}, {}, {125, 1250, 1375}, 8);
    expectTicks({}, {100, 130}, {125, 250, 505, 630}, 1); // slow posts count as lateness
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
    passTimeTo(360 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({350}));

    clockStop();
    passTimeTo(10'000 * kNsPerMs);
    for (int restart = 0; restart < 100; ++restart) {
        clockStop();
        runClock(240.0);
    }
    passTimeTo(10'130 * kNsPerMs);
    EXPECT_EQ(takeTicks(), inMs({10'063, 10'125}));
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
    void (*const cases[])() = {[] { runClock(120.0); }, // started this moment
                               [] {
                                   runClock(1.0); // waiting for a step
                                   passTimeTo(kStep);
                               },
                               [] {
                                   runClock(120.0);
                                   passTimeTo(kStep);
                                   clockStop();
                               }};
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
