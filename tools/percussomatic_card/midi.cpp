// SPDX-License-Identifier: MIT
#include "commands.h"

#include "cards/card_text.h"
#include "files.h"
#include "output_file.h"
#include "playback.h"

#include <algorithm>
#include <cmath>

namespace percussomatic::tool {

namespace {

constexpr std::uint32_t kTicksPerQuarter = 480;
constexpr std::uint32_t kTicksPerStep = kTicksPerQuarter / 4;
constexpr std::uint32_t kNoteTicks =
    kTicksPerStep / 2; // ends before the next step can repeat the key
constexpr std::uint64_t kDefaultBars = 4;
constexpr std::uint64_t kMaxSteps = 0x0FFFFFFFU / kTicksPerStep; // a tick count has 28 bits

void appendBigEndian(std::string& bytes, std::uint32_t value, std::uint32_t count) {
    for (std::uint32_t left = count; left > 0; --left) {
        bytes += static_cast<char>(value >> (8 * (left - 1)) & 0xFFU);
    }
}

// A variable-length quantity: seven bits per byte, most significant first; bit 7 is set in all
// bytes but the last.
void appendVariableLength(std::string& bytes, std::uint32_t value) {
    for (std::uint32_t shift = 21; shift > 0; shift -= 7) {
        if (value >> shift != 0) {
            bytes += static_cast<char>(0x80U | (value >> shift & 0x7FU));
        }
    }
    bytes += static_cast<char>(value & 0x7FU);
}

// Collects the events of a track in chronological order.
class Track {
public:
    void meta(std::uint8_t type, std::string_view body) {
        appendDeltaTime();
        appendBigEndian(bytes_, 0xFF00U | type, 2);
        appendVariableLength(bytes_, static_cast<std::uint32_t>(body.size()));
        bytes_ += body;
    }
    void note(std::uint8_t key, std::uint8_t velocity) { // velocity 0 ends it
        constexpr std::uint8_t kNoteOnChannel10 = 0x99;
        appendDeltaTime();
        appendBigEndian(bytes_, kNoteOnChannel10, 1);
        appendBigEndian(bytes_, key, 1);
        appendBigEndian(bytes_, velocity, 1);
    }
    void moveTo(std::uint32_t tick) { tick_ = tick; }
    const std::string& bytes() const { return bytes_; }

private:
    void appendDeltaTime() {
        appendVariableLength(bytes_, tick_ - lastEventTick_);
        lastEventTick_ = tick_;
    }

    std::string bytes_;
    std::uint32_t tick_ = 0;
    std::uint32_t lastEventTick_ = 0;
};

std::uint8_t velocityForGain(float gain) {
    constexpr float kMaxVelocity = 127.0f;
    return static_cast<std::uint8_t>(std::max(1L, std::lround(kMaxVelocity * gain)));
}

std::string trackBytes(const PunchCard& card, double bpm, std::uint32_t steps) {
    constexpr std::uint8_t kTrackName = 0x03, kTempo = 0x51, kEnd = 0x2F;
    constexpr double kMicrosecondsPerMinute = 60e6;
    std::string tempo;
    appendBigEndian(tempo, static_cast<std::uint32_t>(std::lround(kMicrosecondsPerMinute / bpm)),
                    3);

    Track track;
    track.meta(kTrackName, utf8FromWide(cardLabel(card, 0)));
    track.meta(kTempo, tempo);
    for (std::uint32_t step = 0; step < steps; ++step) {
        const auto hits = hitsOnStep(card, static_cast<int>(step % card.sequenceLength));
        track.moveTo(step * kTicksPerStep);
        for (const Hit& hit : hits) {
            track.note(kInstruments[hit.sampleIndex].midiKey, velocityForGain(hit.gain));
        }
        track.moveTo(step * kTicksPerStep + kNoteTicks);
        for (const Hit& hit : hits) {
            track.note(kInstruments[hit.sampleIndex].midiKey, 0);
        }
    }
    track.moveTo(steps * kTicksPerStep); // the end of the last bar, so that the track can be looped
    track.meta(kEnd, "");
    return track.bytes();
}

} // namespace

int midi(const Arguments& arguments) {
    const std::uint64_t bars = arguments.count("--bars").value_or(kDefaultBars);
    requireSeparateOutput(arguments);
    const auto read = readCard(arguments.operands[0]);
    if (!read) {
        return kFailure;
    }
    const PunchCard card = withSettings(read->card);
    if (bars > kMaxSteps / card.sequenceLength) {
        reportError(arguments.operands[1], "would have more than 2 million steps");
        return kFailure;
    }
    const auto steps = static_cast<std::uint32_t>(bars * card.sequenceLength);
    const std::string track = trackBytes(card, tempoBpm(read->card), steps);

    std::string bytes = "MThd";
    appendBigEndian(bytes, 6, 4);
    appendBigEndian(bytes, 0, 2); // type 0
    appendBigEndian(bytes, 1, 2); // one track
    appendBigEndian(bytes, kTicksPerQuarter, 2);
    bytes += "MTrk";
    appendBigEndian(bytes, static_cast<std::uint32_t>(track.size()), 4);
    return writeOutput(arguments.operands[1], bytes + track);
}

} // namespace percussomatic::tool
