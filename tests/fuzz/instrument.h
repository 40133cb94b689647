// SPDX-License-Identifier: MIT
#pragma once

#include "fuzz/fuzzing.h"
#include "graphics/pixel_rect.h"
#include "sequencer/sequencer.h"
#include "support/fake_system.h"

#include <cstdint>

namespace percussomatic::fuzz {

// The freshly started core on the fake platform. Each action reaches it through the functions that
// the main window calls; after each one the invariants are checked. Cards go to the working
// directory.
class Instrument {
public:
    Instrument();

    // Performs action 0..15 with parameters from the input: 0 to 7 use the panel, time and MIDI,
    // the others cards, effects, the window and renders. False once the program has ended.
    bool act(int action, Input& input);

    static void receive(int status, Input& input); // a MIDI message with two data bytes

private:
    void perform(int action, Input& input);
    void press(PixelPoint point, Input& input);
    void pass(std::int64_t ns);

    FreshInstrument fresh_;
    Size client_{1618, 1040};
    PixelPoint cursor_{};
    std::uint32_t framesLeft_ = 8192; // limits the time that renders take
    bool ended_ = false;
};

// Conditions that hold after every action.
void checkInvariants();

} // namespace percussomatic::fuzz
