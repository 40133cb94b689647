// SPDX-License-Identifier: MIT
// Input: MIDI messages (first byte 0x80 or above) mixed with actions on the panel.
#include "fuzz/instrument.h"

using namespace percussomatic::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Instrument instrument;
    bool on = true;
    while (on && !input.empty()) {
        const int first = input.byte();
        if (first >= 0x80) {
            Instrument::receive(first, input);
        } else {
            on = instrument.act(first % 8, input);
        }
    }
    return 0;
}
