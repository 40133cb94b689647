#include "fuzz/instrument.h"

// A stream of MIDI messages, with acts at the panel and passing time between them.

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
            on = instrument.actOnPanel(first, input);
        }
    }
    return 0;
}
