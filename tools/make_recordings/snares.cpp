// Snare and rolling snare: two modes of a two-headed body, and the wires under it.

#include "noise.h"
#include "struck_resonator.h"
#include "voices.h"

#include <algorithm>
#include <array>

namespace recordings {
namespace {

struct SnareDrum {
    double bodyGain;
    double bodyT60Ms;
    double wireGain;
    std::array<double, 2> rattleT60Ms; // the wires' bright part: its snap and its tail
    double buzzT60Ms;                  // and their middle
};

struct Hand {
    double levelDb;
    double pitch;
    double brightness; // factor on the wires' filters
    double lean;       // of the mid into the side, to the left when positive
};

constexpr SnareDrum kSnare = {0.80, 170.0, 1.55, {110.0, 330.0}, 280.0};
constexpr Hand kOneHand = {0.0, 1.0, 1.0, 0.0};

// Smaller and drier, so that fifteen strokes of it stay apart.
constexpr SnareDrum kRollDrum = {0.55, 100.0, 1.60, {60.0, 150.0}, 130.0};
constexpr std::array<Hand, 2> kTwoHands = {{
    {0.0, 1.0, 1.0, -0.05}, {-1.3, 0.988, 0.95, 0.05}, // the weaker hand
}};

// Modes of the heads: gain and decay as factors on the drum's. The 0,1 mode of two
// heads coupled by the air between them splits into a pair (Rossing, Bork, Zhao and
// Fystrom, JASA 92, 1992); a blow off the centre wakes two more for a moment.
constexpr auto kHeads = std::to_array<Mode>({
    {187.0, 1.00, 1.00, 0.09, 12.0},
    {332.0, 0.75, 0.70, 0.06, 10.0},
    {283.0, 0.22, 0.40, 0.06, 10.0},
    {418.0, 0.20, 0.35, 0.06, 10.0},
});

// The lower head throws the wires off and catches them again in each of its periods
// (Bilbao, JASA 131, 2012): their noise follows the body for as long as it moves.
void rattle(Sound& wires, const Signal& body) {
    constexpr double kDepth = 0.7;
    double peak = 0.0;
    for (const double sample : body) {
        peak = std::max(peak, std::abs(sample));
    }
    for (std::size_t frame = 0; frame < body.size(); ++frame) {
        const double contact = 1.0 - kDepth * body[frame] / peak;
        wires.mid[frame] *= contact;
        wires.side[frame] *= contact;
    }
}

// Uses two noise seeds: seed and the one after it.
Sound hit(const SnareDrum& drum, const Hand& hand, std::uint64_t seed, std::size_t frames) {
    constexpr double kStickMs = 1.2;
    constexpr double kWireSide = 0.27; // the wires are as wide as the drum

    Sound body(frames);
    for (const Mode& mode : kHeads) {
        strike(body.mid, kStickMs,
               {mode.hz * hand.pitch, mode.gain * drum.bodyGain, mode.t60Ms * drum.bodyT60Ms,
                mode.glide, mode.glideTauMs});
    }
    Sound wires(frames);
    addNoise(wires,
             {.seed = seed,
              .filters = {highPass(3200.0 * hand.brightness), lowPass(11000.0 * hand.brightness)},
              .decays = {{0.62, 0.8, drum.rattleT60Ms[0]}, {0.38, 2.0, drum.rattleT60Ms[1]}},
              .gain = 1.3 * drum.wireGain,
              .sideGain = kWireSide});
    addNoise(wires, {.seed = seed + 1,
                     .filters = {bandPass(1900.0 * hand.brightness, 0.8), highPass(700.0)},
                     .decays = {{1.0, 1.5, drum.buzzT60Ms}},
                     .gain = 0.85 * drum.wireGain,
                     .sideGain = kWireSide});
    rattle(wires, body.mid);
    addScaled(wires, body, 1.0);
    addScaled(wires.side, wires.mid, hand.lean);
    return wires;
}

// The roll swells in, holds, and leaves without an accent: an accent would miss the
// beat at most tempos, and retriggered on each beat it should join into one long roll.
double rollLevel(double ms) noexcept {
    constexpr double kSwellMs = 100.0;
    constexpr double kHoldUntilMs = 500.0;
    constexpr double kEndMs = 950.0;
    constexpr double kEndDb = -10.0;
    if (ms < kSwellMs) {
        return 0.6 + 0.4 * ms / kSwellMs;
    }
    if (ms < kHoldUntilMs) {
        return 1.0;
    }
    return gainFromDb(kEndDb * (ms - kHoldUntilMs) / (kEndMs - kHoldUntilMs));
}

struct Touch {
    double delay; // of the interval to the next stroke
    double gain;
};

// A stroke and its two bounces, which land before the other hand does.
constexpr std::array<Touch, 3> kTouches = {{{0.0, 1.0}, {0.36, 0.42}, {0.66, 0.26}}};

} // namespace

Sound snare(std::size_t frames) {
    Sound sound = hit(kSnare, kOneHand, 301, frames);
    // The tip of the stick on the head, before anything rings.
    strike(sound.mid, 0.6, {1700.0, 0.5, 6.0});
    return sound;
}

// Alternating hands. What keeps it from sounding like a machine gun is that no two
// strokes share spacing, level or noise.
Sound rollingSnare(std::size_t frames) {
    constexpr int kStrokes = 15;
    constexpr double kIntervalMs = 1000.0 / 15.5;
    constexpr double kIntervalDeviation = 0.035;
    constexpr double kLevelDeviationDb = 0.8;
    constexpr double kBounceDeviation = 0.06;
    constexpr double kHitMs = 400.0; // long enough for one hit to die away

    Sound roll(frames);
    Noise chance(401);
    std::uint64_t seed = 410;
    double startMs = 0.0;
    for (std::size_t stroke = 0; stroke < kStrokes; ++stroke) {
        const Hand& hand = kTwoHands[stroke % kTwoHands.size()];
        const double gain =
            rollLevel(startMs) * gainFromDb(hand.levelDb + kLevelDeviationDb * chance.nextNormal());
        const double interval = kIntervalMs * (1.0 + kIntervalDeviation * chance.nextNormal());
        for (const Touch& touch : kTouches) {
            const double delay = touch.delay * (1.0 + kBounceDeviation * chance.next());
            addScaled(roll, hit(kRollDrum, hand, seed, framesIn(kHitMs)), gain * touch.gain,
                      framesIn(startMs + delay * interval));
            seed += 2;
        }
        startMs += interval;
    }
    return roll;
}

} // namespace recordings
