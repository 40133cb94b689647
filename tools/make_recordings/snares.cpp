// SPDX-License-Identifier: MIT
// Snare and rolling snare: modes of the two coupled heads, and the noise of the wires.

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
    std::array<double, 2> wireHighT60Ms; // high band of the wires: attack and tail
    double wireMidT60Ms;                 // middle band of the wires
};

struct Hand {
    double levelDb;
    double pitchRatio;
    double brightness; // factor on the cutoff frequencies of the wires' filters
    double pan;        // gain of the mid added to the side: positive is left
};

constexpr SnareDrum kSnare = {0.80, 170.0, 1.55, {110.0, 330.0}, 280.0};
constexpr Hand kSingleHand = {0.0, 1.0, 1.0, 0.0};

// Smaller and drier, so that the fifteen strokes stay distinct.
constexpr SnareDrum kRollDrum = {0.55, 100.0, 1.60, {60.0, 150.0}, 130.0};
constexpr std::array<Hand, 2> kRollHands = {{
    {0.0, 1.0, 1.0, -0.05}, {-1.3, 0.988, 0.95, 0.05}, // the weaker hand
}};

// Modes of the heads; gain and t60Ms are factors on the drum's. The air between the heads
// couples them, which splits their (0,1) mode into a pair (Rossing, Bork, Zhao and
// Fystrom, JASA 92, 1992). An off-centre stroke briefly excites two more.
constexpr auto kHeadModes = std::to_array<Mode>({
    {187.0, 1.00, 1.00, 0.09, 12.0},
    {332.0, 0.75, 0.70, 0.06, 10.0},
    {283.0, 0.22, 0.40, 0.06, 10.0},
    {418.0, 0.20, 0.35, 0.06, 10.0},
});

// In each of its periods the lower head throws the wires off and they fall back onto it
// (Bilbao, JASA 131, 2012), so the body modulates the amplitude of their noise.
void modulateWires(Sound& wires, const Signal& body) {
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

// Uses two noise seeds: seed and seed + 1.
Sound renderHit(const SnareDrum& drum, const Hand& hand, std::uint64_t seed, std::size_t frames) {
    constexpr double kStickContactMs = 1.2;
    constexpr double kWireSideGain = 0.27; // the wires span the width of the drum

    Sound body(frames);
    for (const Mode& mode : kHeadModes) {
        strike(body.mid, kStickContactMs,
               {mode.hz * hand.pitchRatio, mode.gain * drum.bodyGain, mode.t60Ms * drum.bodyT60Ms,
                mode.glide, mode.glideTauMs});
    }
    Sound wires(frames);
    addNoise(wires,
             {.seed = seed,
              .filters = {highPass(3200.0 * hand.brightness), lowPass(11000.0 * hand.brightness)},
              .decays = {{0.62, 0.8, drum.wireHighT60Ms[0]}, {0.38, 2.0, drum.wireHighT60Ms[1]}},
              .gain = 1.3 * drum.wireGain,
              .sideGain = kWireSideGain});
    addNoise(wires, {.seed = seed + 1,
                     .filters = {bandPass(1900.0 * hand.brightness, 0.8), highPass(700.0)},
                     .decays = {{1.0, 1.5, drum.wireMidT60Ms}},
                     .gain = 0.85 * drum.wireGain,
                     .sideGain = kWireSideGain});
    modulateWires(wires, body.mid);
    addScaled(wires, body, 1.0);
    addScaled(wires.side, wires.mid, hand.pan);
    return wires;
}

// Gain of the roll over time: it swells, holds and fades out without a final accent. An
// accent would miss the beat at most tempos, and a roll retriggered on every beat should
// sound continuous.
double rollGain(double ms) noexcept {
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

struct Impact {
    double delay; // as a fraction of the interval to the next stroke
    double gain;
};

// A stroke and its two bounces, all before the next stroke of the other hand.
constexpr std::array<Impact, 3> kImpacts = {{{0.0, 1.0}, {0.36, 0.42}, {0.66, 0.26}}};

} // namespace

Sound snare(std::size_t frames) {
    Sound sound = renderHit(kSnare, kSingleHand, 301, frames);
    // The attack of the stick's tip on the head.
    strike(sound.mid, 0.6, {1700.0, 0.5, 6.0});
    return sound;
}

// Alternating hands. No two strokes have the same spacing, level or noise, so that the
// roll does not sound like a machine gun.
Sound rollingSnare(std::size_t frames) {
    constexpr int kStrokeCount = 15;
    constexpr double kIntervalMs = 1000.0 / 15.5;
    constexpr double kIntervalDeviation = 0.035;
    constexpr double kLevelDeviationDb = 0.8;
    constexpr double kBounceDeviation = 0.06;
    constexpr double kHitMs = 400.0; // long enough for one hit to decay

    Sound roll(frames);
    Noise random(401);
    std::uint64_t seed = 410;
    double startMs = 0.0;
    for (std::size_t stroke = 0; stroke < kStrokeCount; ++stroke) {
        const Hand& hand = kRollHands[stroke % kRollHands.size()];
        const double gain =
            rollGain(startMs) * gainFromDb(hand.levelDb + kLevelDeviationDb * random.nextNormal());
        const double interval = kIntervalMs * (1.0 + kIntervalDeviation * random.nextNormal());
        for (const Impact& impact : kImpacts) {
            const double delay = impact.delay * (1.0 + kBounceDeviation * random.next());
            addScaled(roll, renderHit(kRollDrum, hand, seed, framesIn(kHitMs)), gain * impact.gain,
                      framesIn(startMs + delay * interval));
            seed += 2;
        }
        startMs += interval;
    }
    return roll;
}

} // namespace recordings
