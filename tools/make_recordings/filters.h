// SPDX-License-Identifier: MIT
#pragma once

#include "sound.h"
#include <vector>

namespace recordings {

enum class Response { lowPass, bandPass, highPass, steepHighPass };

// One stage of a filter chain: a 2-pole state-variable filter, except that
// steepHighPass is a 4-pole Butterworth built from two of them and ignores q.
// A band-pass has gain 1 at its centre.
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

// Applies the stages in order, in place.
void filter(Signal& signal, const std::vector<FilterStage>& stages);

// Linear-phase low-pass for every recording. The instrument plays at half the rate by
// dropping every second frame, so anything left above 24 kHz would alias. Delays the
// signal by kBandLimitDelayFrames.
void bandLimit(Signal& signal);

inline constexpr std::size_t kBandLimitDelayFrames = 90; // 0.94 ms

} // namespace recordings
