#include "midi/midi_message.h"

#include "midi/midi_state.h"
#include "support/recorded_midi.h"

#include <gtest/gtest.h>

#include <utility>

namespace percussomatic {
namespace {

TEST(MidiMessage, ShowsWhatArrives) {
    const FreshMidi instrument;
    const std::pair<std::uint32_t, const wchar_t*> cases[] = {
        {0x407B90, L"Received: NOTE ON 123 Value 64 CH 1"},
        {0x007B9F, L"Received: NOTE OFF 123 Value 0 CH 16"}, // velocity 0
        {0x7F15B0, L"Received: CC 21 Value 127 CH 1"},
        {0x4001E0, L"Received: PITCH BEND 8193 CH 1"},
        {0x7F7FEF, L"Received: PITCH BEND 16383 CH 16"}};
    constexpr std::uint32_t kNotShown[] = {0x4040A0, 0x0040C0, 0x0040D3, 0x0000F0, 0x4040F2,
                                           0x0000F8, 0x0000FA, 0x0000FE, 0x0000FF, 0x407B10};
    for (const auto& [message, text] : cases) {
        handleMidiMessage(message);
        EXPECT_EQ(recordedMidi().learnLine, text);
        EXPECT_EQ(midiState().learnStatusText, text);
        for (const std::uint32_t other : kNotShown) {
            handleMidiMessage(other);
            EXPECT_EQ(recordedMidi().learnLine, text) << std::hex << other;
        }
    }
}

} // namespace
} // namespace percussomatic
