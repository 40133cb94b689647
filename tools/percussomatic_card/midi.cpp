#include "commands.h"

#include "cards/card_text.h"
#include "files.h"
#include "playing.h"

#include <algorithm>
#include <cmath>

namespace percussomatic::tool {

namespace {

constexpr std::uint32_t kQuarterTicks = 480;
constexpr std::uint32_t kStepTicks = kQuarterTicks / 4;
constexpr std::uint32_t kNoteTicks = kStepTicks / 2; // ends before its key can be struck again
constexpr std::uint64_t kPlainBars = 4;
constexpr std::uint64_t kMostSteps = 0x0FFFFFFFU / kStepTicks; // the largest pause is 28 bits

void appendBigEndian(std::string& bytes, std::uint32_t value, std::uint32_t count) {
    for (std::uint32_t left = count; left > 0; --left) {
        bytes += static_cast<char>(value >> (8 * (left - 1)) & 0xFFU);
    }
}

// Seven bits a byte, the highest first; all but the last are marked.
void appendVariable(std::string& bytes, std::uint32_t value) {
    for (std::uint32_t shift = 21; shift > 0; shift -= 7) {
        if (value >> shift != 0) {
            bytes += static_cast<char>(0x80U | (value >> shift & 0x7FU));
        }
    }
    bytes += static_cast<char>(value & 0x7FU);
}

// The one track, in the order of time.
class Track {
public:
    void meta(std::uint8_t type, std::string_view body) {
        pause();
        appendBigEndian(bytes_, 0xFF00U | type, 2);
        appendVariable(bytes_, static_cast<std::uint32_t>(body.size()));
        bytes_ += body;
    }
    void note(std::uint8_t key, std::uint8_t velocity) { // 0: ends
        constexpr std::uint8_t kNoteOnChannel10 = 0x99;
        pause();
        appendBigEndian(bytes_, kNoteOnChannel10, 1);
        appendBigEndian(bytes_, key, 1);
        appendBigEndian(bytes_, velocity, 1);
    }
    void moveTo(std::uint32_t tick) { tick_ = tick; }
    const std::string& bytes() const { return bytes_; }

private:
    void pause() {
        appendVariable(bytes_, tick_ - written_);
        written_ = tick_;
    }

    std::string bytes_;
    std::uint32_t tick_ = 0;
    std::uint32_t written_ = 0; // tick of the last event
};

std::uint8_t velocityOf(float gain) {
    constexpr float kLoudest = 127.0f;
    return static_cast<std::uint8_t>(std::max(1L, std::lround(kLoudest * gain)));
}

std::string trackOf(const PunchCard& card, double bpm, std::uint32_t steps) {
    constexpr std::uint8_t kTrackName = 0x03, kTempo = 0x51, kEnd = 0x2F;
    constexpr double kMinuteMicroseconds = 60e6;
    std::string tempo;
    appendBigEndian(tempo, static_cast<std::uint32_t>(std::lround(kMinuteMicroseconds / bpm)), 3);

    Track track;
    track.meta(kTrackName, utf8FromWide(cardLabel(card, 0)));
    track.meta(kTempo, tempo);
    for (std::uint32_t step = 0; step < steps; ++step) {
        const auto strokes = strokesOn(card, static_cast<int>(step % card.sequenceLength));
        track.moveTo(step * kStepTicks);
        for (const Stroke& stroke : strokes) {
            track.note(kInstruments[stroke.sampleIndex].midiKey, velocityOf(stroke.gain));
        }
        track.moveTo(step * kStepTicks + kNoteTicks);
        for (const Stroke& stroke : strokes) {
            track.note(kInstruments[stroke.sampleIndex].midiKey, 0);
        }
    }
    track.moveTo(steps * kStepTicks); // a whole bar, for loops
    track.meta(kEnd, "");
    return track.bytes();
}

} // namespace

int midi(const Arguments& arguments) {
    const std::uint64_t bars = arguments.count("--bars").value_or(kPlainBars);
    keepCard(arguments);
    const auto read = readCard(arguments.operands[0]);
    if (!read) {
        return kFailed;
    }
    const PunchCard card = withSettings(read->card);
    if (bars > kMostSteps / card.sequenceLength) {
        tellFault(arguments.operands[1], "would be longer than 2 million steps");
        return kFailed;
    }
    const auto steps = static_cast<std::uint32_t>(bars * card.sequenceLength);
    const std::string track = trackOf(card, tempoBpm(read->card), steps);

    std::string bytes = "MThd";
    appendBigEndian(bytes, 6, 4);
    appendBigEndian(bytes, 0, 2); // type 0
    appendBigEndian(bytes, 1, 2); // one track
    appendBigEndian(bytes, kQuarterTicks, 2);
    bytes += "MTrk";
    appendBigEndian(bytes, static_cast<std::uint32_t>(track.size()), 4);
    return writeOutput(arguments.operands[1], bytes + track);
}

} // namespace percussomatic::tool
