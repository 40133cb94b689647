#include "fuzz/instrument.h"

// Somebody plays: clicks, drags, time, MIDI, cards, effects, and renders compared with the plain
// engine's.

using namespace percussomatic::fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    Instrument instrument;
    while (!input.empty() && instrument.act(input.byte(), input)) {
    }
    return 0;
}
