#pragma once

#include "fuzz/fuzzing.h"
#include "fuzz/sound.h"
#include "panel/control_geometry.h"
#include "support/fake_midi.h"

#include <cstdint>

namespace percussomatic::fuzz {

// The whole core as just started, on the tests' screen, system and clock, and a hand that does to
// it what the bytes say, by the roads of the main window. After every act it is looked through for
// what must never be. Cards go to the working directory.
class Instrument {
public:
    Instrument();

    // One act, by any number, and what it needs from the input. False: it was switched off, and the
    // program has ended.
    bool actOnPanel(int number, Input& input); // panel, time and MIDI
    bool act(int number, Input& input);        // all that and cards, effects, renders

    static void receive(int status, Input& input); // a MIDI message with two data bytes

private:
    void perform(int number, Input& input);
    void press(PixelPoint client, Input& input);
    void move(int byX, int byY, bool fine);
    void pass(std::int64_t ns);
    void play(std::uint32_t frames);
    double scale() const;

    const Indices& recordings_; // before the tiny ones: the sends go by the first indices
    FreshMidi fresh_;
    Size client_;
    PixelPoint cursor_;
    std::uint32_t framesLeft_ = 8192; // renders take most of the time
    bool ended_ = false;
};

} // namespace percussomatic::fuzz
