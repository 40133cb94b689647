#include "sequencer/transport.h"

#include "sequencer/panel_state.h"
#include "sequencer/sequencer.h"
#include "support/panel_hand.h"
#include "support/recorded_screen.h"
#include "support/recorded_system.h"
#include "support/virtual_clock.h"

#include <gtest/gtest.h>

#include <vector>

namespace percussomatic {
namespace {

class Transport : public testing::Test {
protected:
    FreshInstrument instrument_;
};

TEST_F(Transport, StartSwitchStartsTheClockAndStopsIt) {
    setTempoBpm(240.0);
    toggleRunning();
    passTimeTo(125 * kNsPerMs);
    EXPECT_EQ(takePostedTicks(), (std::vector<PostedTick>{{mainWindow(), 63 * kNsPerMs},
                                                          {mainWindow(), 125 * kNsPerMs}}));
    toggleRunning();
    passTimeTo(1000 * kNsPerMs);
    EXPECT_EQ(takePostedTicks().size(), 0u);
    recordedSystem().window = nullptr; // destroyed: the clock goes on posting to none
    toggleRunning();
    passTimeTo(1125 * kNsPerMs);
    EXPECT_EQ(takePostedTicks(),
              (std::vector<PostedTick>{{nullptr, 1063 * kNsPerMs}, {nullptr, 1125 * kNsPerMs}}));
}

TEST_F(Transport, TypedTempoIsClampedTurnsTheRotaryAndEndsItsDrag) {
    const struct {
        double typed, bpm, value;
    } cases[] = {{140.0, 140.0, 0.5}, {39.9, 40.0, 0.0}, {1e9, 240.0, 1.0}};
    for (const auto& [typed, bpm, value] : cases) {
        SCOPED_TRACE(typed);
        panelState().tempo = {.value = 0.7, .dragStartValue = 0.6, .dragging = true};
        takeRedraws();
        setTempoBpm(typed);
        EXPECT_EQ(sequencer().bpm, bpm);
        EXPECT_DOUBLE_EQ(panelState().tempo.value, value);
        EXPECT_DOUBLE_EQ(panelState().tempo.dragStartValue, value);
        EXPECT_FALSE(panelState().tempo.dragging);
        EXPECT_EQ(takeRedraws(), (Names{"tempo box", "rotary_002 now"}));
        EXPECT_EQ(staleControls(), Names{});
    }
}

} // namespace
} // namespace percussomatic
