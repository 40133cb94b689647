// SPDX-License-Identifier: MIT
// Input: a sequence of user actions, MIDI messages, time steps and renders.
#include "fuzz/instrument.h"

using namespace percussomatic::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Instrument instrument;
    while (!input.empty() && instrument.act(input.byte() % 16, input)) {
    }
    return 0;
}
