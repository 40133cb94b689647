// SPDX-License-Identifier: MIT
// Plays the instrument at random for hours of accelerated time. Fails if the step clock leaves its
// grid, memory grows, a card cannot be saved or the reverb contains denormal numbers, which slow
// the processor down.
//
//   long_play HOURS [SEED]    writes its cards to the working directory

#include "audio/effect_choice.h"
#include "audio/effect_controls.h"
#include "audio/sound_engine.h"
#include "cards/card_panel.h"
#include "input/panel_input.h"
#include "panel/control_names.h"
#include "sequencer/sequencer.h"
#include "sequencer/step_clock.h"
#include "sequencer/transport.h"
#include "support/fake_system.h"
#include "support/panel_actions.h"
#include "support/virtual_clock.h"

#include <malloc.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <random>

namespace percussomatic {
namespace {

constexpr std::int64_t kNsPerSecond = 1'000'000'000;
// Rounds of music and of silence, which is longer than any tail.
constexpr std::int64_t kMusicNs = 1080 * kNsPerSecond, kSilenceNs = 180 * kNsPerSecond;
constexpr int kMaxLateMs = 20; // of the clock's wake-ups
constexpr Size kClient{kClientWidth, kClientHeight};

int faults = 0;

void expect(bool condition, const std::string& fault) {
    if (!condition && ++faults <= 10) {
        std::cout << "FAULT: " << fault << '\n';
    }
}

void click(PixelPoint point) {
    pressPanel(point, kClient);
    releasePointer();
}

void click(std::string_view control) {
    click(centreOf(control));
}

void click(PixelRect PanelRects::*box) {
    const PixelRect rect = cardPanelRects(kClient).*box;
    click(centreOf(rect));
}

void leaveEditMode() { // silent otherwise
    if (sequencer().editMode && !cardPanel().insertingCard) {
        click(control::kEdit);
    }
}

class RandomPlayer {
public:
    explicit RandomPlayer(unsigned seed) : random_(seed) {}

    int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned>(limit)); }

    void act() {
        switch (below(16)) {
        case 0:
            selectPreset(below(4));
            moveBar(soundEngine(), kSendBarId + below(kSendBars), below(kMaxBarPosition + 1));
            moveBar(soundEngine(), kParameterBarId + below(5), below(kMaxBarPosition + 1));
            soundEngine().setEffectEnabled(below(4) != 0);
            break;
        case 1:
            click(&PanelRects::cards);
            click(&PanelRects::nextCard);
            click(below(2) == 0 ? &PanelRects::save : &PanelRects::load);
            if (cardPanel().cardsDialogOpen) {
                pressKey(Key::escape, false);
            }
            break;
        default:
            for (int count = below(8); count > 0; --count) {
                use(below(kControlCount));
            }
        }
        if (below(2) == 0) {
            leaveEditMode();
        }
    }

private:
    void use(int index) {
        const ControlKind kind = controlKind(index);
        if (kind == ControlKind::picture || kind == ControlKind::power ||
            kind == ControlKind::startStop) { // one grid lasts from the first step to the last
            return;
        }
        pressPanel(centreOf(index), kClient);
        movePointer({below(kClientWidth), below(kClientHeight)}, kClient, below(2) != 0);
        releasePointer();
    }

    std::mt19937 random_;
};

// Compares every tick with a grid that is computed with fractions of a nanosecond. The step clock
// rounds each step down to nanoseconds and its waits up to milliseconds.
struct Grid {
    void playTicks() {
        for (const PostedTick& tick : takePostedTicks()) {
            lateNs = static_cast<long double>(tick.atNs) - nextNs;
            expect(lateNs > -static_cast<long double>(++steps), "a step is early");
            expect(lateNs <= (kMaxLateMs + 1) * kNsPerMs, "a step is late");
            nextNs += stepNs(); // the tempo at a tick applies to the next step
            onClockTick();
        }
    }

    static long double stepNs() { return 15e9L / static_cast<long double>(stepClock().clockBpm); }

    long double nextNs = stepNs(), lateNs = 0;
    std::int64_t steps = 0;
};

bool reverbHasDenormals() {
    bool found = false;
    const auto check = [&](const auto& numbers) {
        found = found || std::ranges::any_of(numbers, [](float number) {
                    return std::fpclassify(number) == FP_SUBNORMAL;
                });
    };
    const auto& reverb = soundEngine().reverb;
    check(reverb.preDelayLeft);
    check(reverb.preDelayRight);
    for (std::size_t channel = 0; channel < 2; ++channel) {
        for (const auto& comb : reverb.combs[channel]) {
            check(comb.buffer);
            check(std::array{comb.filterStore});
        }
        for (const auto& allpass : reverb.allpasses[channel]) {
            check(allpass.buffer);
        }
    }
    return found;
}

std::size_t allocatedKb() {
    const auto memory = mallinfo2();
    return (memory.uordblks + memory.hblkhd) / 1024;
}

int play(double hours, unsigned seed) {
    loadLineSamples();
    const auto recordings = sequencer().sampleIndices;
    const FreshInstrument instrument;
    sequencer().sampleIndices = recordings;
    SoundEngine& engine = soundEngine();
    engine.prepareForDevice();
    setClockWindow(mainWindow());

    RandomPlayer player(seed);
    StreamClock streamClock;
    std::array<std::int16_t, 2 * std::size_t{kDeviceBufferFrames}> block{};
    const auto blocks =
        static_cast<std::int64_t>(hours * 3600 * kDeviceRateHz / kDeviceBufferFrames);
    std::int64_t nextActionNs = 0, nextCheckNs = 0, audibleBlocks = 0;
    std::size_t firstKb = 0; // after a twelfth of the time
    bool silenced = false;
    click(control::kStartStop);
    Grid grid;
    for (std::int64_t number = 1; number <= blocks; ++number) {
        const std::int64_t nowNs =
            number * kDeviceBufferFrames * kNsPerSecond / std::int64_t{kDeviceRateHz};
        passTimeTo(nowNs);
        grid.playTicks();
        for (const auto& [timer, period] : std::map(fakeSystem().timers)) {
            fireTimer(timer);
        }
        if (nowNs >= nextCheckNs) {
            nextCheckNs = nowNs + 10 * kNsPerSecond;
            expect(!reverbHasDenormals(), "denormal numbers in the reverb");
            // The last wake-ups are on time, so that the last step shows where the grid is.
            std::vector<std::int64_t> lateNs(number + 2000 < blocks ? 200 : 0);
            std::ranges::generate(lateNs, [&] { return player.below(kMaxLateMs + 1) * kNsPerMs; });
            scriptLateness(lateNs);
        }
        const bool music = nowNs % (kMusicNs + kSilenceNs) < kMusicNs;
        if (music && nowNs >= nextActionNs) {
            nextActionNs = nowNs + player.below(4000) * kNsPerMs;
            player.act();
            takeRedraws();
        }
        if (!music && !silenced && !cardPanel().insertingCard) {
            click(control::kClearAll);
            leaveEditMode();
            engine.setEffectEnabled(true);
        }
        silenced = !music && !cardPanel().insertingCard;

        if (const auto position = nextBlock(streamClock, nowNs, kDeviceBufferFrames)) {
            engine.renderTimedBlock(block.data(), kDeviceBufferFrames, *position);
        } else {
            engine.renderBlock(block.data(), kDeviceBufferFrames);
        }
        expect(!engine.pendingTriggers.full(), "triggers pile up");
        audibleBlocks += std::ranges::any_of(block, [](int value) { return value != 0; }) ? 1 : 0;
        if (number == std::max<std::int64_t>(blocks / 12, 1)) {
            firstKb = allocatedKb();
        }
    }

    const std::size_t lastKb = allocatedKb();
    std::cout << hours << " hours, seed " << seed << ": " << grid.steps << " steps, sound in "
              << 100 * audibleBlocks / blocks << " % of the blocks\n"
              << "memory: " << firstKb << " KB after a twelfth, " << lastKb << " KB at the end\n";
    expect(grid.lateNs <= kNsPerMs, "the last step is off the grid");
    expect(droppedStepCount() == 0, "steps are dropped");
    expect(fakeSystem().problems.empty(), "a card was not saved");
    expect(audibleBlocks > blocks / 4, "mostly silence");
    expect(lastKb < firstKb + 256, "memory grows"); // titles and redraw requests may take some
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
