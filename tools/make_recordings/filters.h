#pragma once

#include "sound.h"
#include <vector>

namespace recordings {

enum class Response { lowPass, bandPass, highPass, steepHighPass };

// One stage of a filter chain: a 2-pole state-variable filter, or for the steep
// high-pass a 4-pole Butterworth made of two. Band-passes have gain 1 at the centre.
struct FilterStage {
    Response response;
    double hz;
    double q;
};

inline constexpr double kButterworthQ = 0.7071067811865476;

constexpr FilterStage lowPass(double hz) noexcept {
    return {Response::lowPass, hz, kButterworthQ};
}
constexpr FilterStage highPass(double hz) noexcept {
    return {Response::highPass, hz, kButterworthQ};
}
constexpr FilterStage steepHighPass(double hz) noexcept {
    return {Response::steepHighPass, hz, kButterworthQ};
}
constexpr FilterStage bandPass(double hz, double q) noexcept {
    return {Response::bandPass, hz, q};
}

void filter(Signal& signal, const std::vector<FilterStage>& stages);

// Linear-phase low-pass for every recording: the player halves the rate by dropping
// every second frame, so nothing may be left above 24 kHz. Delays by
// kBandLimitDelayFrames.
void bandLimit(Signal& signal);

inline constexpr std::size_t kBandLimitDelayFrames = 90; // 0.94 ms

} // namespace recordings
