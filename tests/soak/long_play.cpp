// Hours of music in accelerated time: a hand that plays at random, the step clock, the cards and
// the sound engine. Ends with 1 when the clock has left its grid, memory grows, a card cannot be
// saved, a lamp is stale or the reverb is full of numbers that slow a processor down.
//
//   long_play HOURS [SEED]    leaves its cards where it runs
//
// The hand rests now and then for longer than any tail lasts.

#include "audio/effect_choice.h"
#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "redraw.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "support/fake_screen.h"
#include "support/fake_system.h"
#include "support/panel_actions.h"
#include "support/virtual_clock.h"

#include <malloc.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <random>
#include <unistd.h>

namespace percussomatic {
namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
constexpr std::int64_t kPlayNs = 1080 * kNsPerSecond, kRestNs = 180 * kNsPerSecond;
constexpr int kLatestMs = 20; // of a wait of the clock
constexpr Size kClient{kClientWidth, kClientHeight};

int faults = 0;

void expect(bool holds, const std::string& fault) {
    if (!holds && ++faults <= 10) {
        std::cout << "FAULT: " << fault << '\n';
    }
}

class Hand {
public:
    explicit Hand(unsigned seed) : random_(seed) {}

    int upTo(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
    float unit() { return static_cast<float>(upTo(1'000'001)) / 1e6f; }

    void play() {
        switch (upTo(16)) {
        case 0:
            turnEffect();
            break;
        case 1:
            showNextCard();
            upTo(2) == 0 ? saveCard() : beginCardInsertion(kClient);
            break;
        case 2:
            turnWheel(centreOf("rotary_002"), kScale, 120 * (upTo(41) - 20), upTo(2) != 0);
            break;
        default:
            for (int count = upTo(8); count > 0; --count) {
                touch(controlRows()[static_cast<std::size_t>(upTo(kControlCount))].name);
            }
        }
        if (sequencer().editMode && !cardPanel().insertingCard && upTo(2) == 0) {
            press("sw_008"); // or it stays silent
        }
        releaseControls();
    }

    static void rest() {
        press("sw_018");
        releaseControls();
        if (sequencer().editMode && !cardPanel().insertingCard) {
            press("sw_008");
        }
        soundEngine().setEffectEnabled(true);
        redrawEffectsBox();
    }

private:
    // Not the start and power switches: one grid goes from the first step to the last.
    void touch(std::string_view name) {
        if (name.starts_with("slider_")) {
            press(name);
            dragControl({upTo(kClientWidth), 0}, kScale, false);
            releaseControls();
        } else if (name.starts_with("rotary_")) {
            turnWheel(centreOf(name), kScale, 120 * (upTo(21) - 10), false);
        } else if (name.starts_with("bottone_") || (name.starts_with("sw_") && name != "sw_007")) {
            press(name);
        }
    }

    void turnEffect() {
        SoundEngine& engine = soundEngine();
        selectPreset(upTo(4));
        engine.setSend(static_cast<std::uint32_t>(upTo(12)), unit());
        engine.setEffectReturn(unit());
        engine.setEffectDamping(unit());
        engine.setEffectPreDelayMs(200.0f * unit());
        engine.setEffectEnabled(upTo(4) != 0);
        redrawEffectsBox(); // as the effects window does
    }

    std::mt19937 random_;
};

// Holds every tick against a grid that is added up with fractions of a nanosecond.
class Grid {
public:
    // The tempo from the last tick on is that of the clock now: a change counts from the next step.
    void playTicks() {
        for (const PostedTick& tick : takePostedTicks()) {
            ++steps_;
            lateNs_ = static_cast<long double>(tick.atNs) - exactNs_;
            expectWithin(kLatestMs * kNsPerMs);
            exactNs_ += intervalNs();
            onStepTick();
        }
    }

    // Less than a nanosecond is lost at every step; waits end at whole milliseconds.
    void expectWithin(std::int64_t lateNs) const {
        expect(lateNs_ > -static_cast<long double>(steps_), "a step is early");
        expect(lateNs_ <= static_cast<long double>(lateNs + kNsPerMs), "a step is late");
    }

    std::int64_t steps() const { return steps_; }
    double lateMs() const { return static_cast<double>(lateNs_) / 1e6; } // of the last

private:
    static long double intervalNs() {
        return 15e9L / static_cast<long double>(stepClock().clockBpm);
    }

    long double exactNs_ = intervalNs(); // of the next step
    long double lateNs_ = 0;
    std::int64_t steps_ = 0;
};

template <typename Numbers>
std::ptrdiff_t denormalsIn(const Numbers& numbers) {
    return std::ranges::count_if(
        numbers, [](float number) { return std::fpclassify(number) == FP_SUBNORMAL; });
}

std::ptrdiff_t denormalsInReverb() {
    const auto& reverb = soundEngine().reverb;
    std::ptrdiff_t count = denormalsIn(reverb.preDelayLeft) + denormalsIn(reverb.preDelayRight);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        for (const auto& comb : reverb.combs[channel]) {
            count += denormalsIn(comb.buffer) + denormalsIn(std::array{comb.filterStore});
        }
        for (const auto& allpass : reverb.allpasses[channel]) {
            count += denormalsIn(allpass.buffer);
        }
    }
    return count;
}

struct Memory {
    long residentKb = 0;
    std::size_t heapKb = 0;
};

Memory memory() {
    long total = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return {resident * sysconf(_SC_PAGESIZE) / 1024, mallinfo2().uordblks / 1024};
}

int play(double hours, unsigned seed) {
    loadLineSamples();
    const auto recordings = sequencer().sampleIndices;
    const FreshInstrument instrument;
    sequencer().sampleIndices = recordings;
    SoundEngine& engine = soundEngine();
    engine.prepareForDevice();
    setClockWindow(mainWindow());

    Hand hand(seed);
    Memory first;
    std::array<std::int16_t, 2 * std::size_t{kDeviceBufferFrames}> block{};
    std::int64_t loudBlocks = 0;
    const auto blocks =
        static_cast<std::int64_t>(hours * 3600 * kDeviceRateHz / kDeviceBufferFrames);
    std::int64_t nextActNs = 0, nextLookNs = 0;
    bool resting = false;
    press("sw_007");
    Grid grid;
    for (std::int64_t number = 1; number <= blocks; ++number) {
        const std::int64_t nowNs =
            number * kDeviceBufferFrames * kNsPerSecond / std::int64_t{kDeviceRateHz};
        const std::int64_t inRoundNs = nowNs % (kPlayNs + kRestNs);
        passTimeTo(nowNs);
        grid.playTicks();
        if (cardPanel().insertingCard) {
            cardInsertionTick();
        }
        if (nowNs >= nextLookNs) {
            nextLookNs = nowNs + 10 * kNsPerSecond;
            expect(denormalsInReverb() == 0, "denormal numbers in the reverb");
            // In the end none is late, and the last step shows where the grid is.
            std::vector<std::int64_t> lateness(number + 2000 < blocks ? 200 : 0);
            std::ranges::generate(lateness, [&] { return hand.upTo(kLatestMs + 1) * kNsPerMs; });
            scriptLateness(lateness);
        }
        if (nowNs >= nextActNs && inRoundNs < kPlayNs) {
            nextActNs = nowNs + hand.upTo(4000) * kNsPerMs;
            hand.play();
            for (const std::string& name : staleControls()) {
                expect(false, name + " is stale");
            }
            takeRedraws();
        }
        if (const bool now = inRoundNs >= kPlayNs && !cardPanel().insertingCard; now != resting) {
            resting = now;
            if (resting) {
                Hand::rest();
            }
        }

        engine.renderBlock(block.data(), kDeviceBufferFrames);
        loudBlocks += std::ranges::any_of(block, [](int value) { return value != 0; }) ? 1 : 0;
        if (number == std::max<std::int64_t>(blocks / 12, 1)) {
            first = memory();
        }
    }

    const Memory last = memory();
    grid.expectWithin(0);
    std::cout << hours << " hours, seed " << seed << ": " << grid.steps() << " steps, sound in "
              << 100 * loudBlocks / blocks << " % of the blocks\n"
              << "last step: " << grid.lateMs() << " ms after its exact place, "
              << droppedStepCount() << " steps dropped\n"
              << "memory after a twelfth: " << first.residentKb << " KB, " << first.heapKb
              << " KB of it on the heap; at the end " << last.residentKb << ", " << last.heapKb
              << '\n';
    expect(droppedStepCount() == 0, "steps are lost");
    expect(fakeSystem().problems.empty(), "a card was not saved");
    expect(loudBlocks > blocks / 4, "hardly any music");
    expect(last.heapKb < first.heapKb + 256, "the heap grows"); // titles, names of redraws
    expect(last.residentKb < first.residentKb + 1024, "memory grows");
    return faults == 0 ? 0 : 1;
}

} // namespace
} // namespace percussomatic

int main(int argc, char** argv) {
    const double hours = argc > 1 ? std::atof(argv[1]) : 0.0;
    if (!(hours > 0.0)) {
        std::cerr << "usage: long_play HOURS [SEED]\n";
        return 2;
    }
    return percussomatic::play(hours, argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1965);
}
