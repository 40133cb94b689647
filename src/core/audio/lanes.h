// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstring>
#include <emmintrin.h>

namespace lumivarda::dsp {

// Four floats in a SIMD register (SSE2, which every x64 processor has). + - * round each lane
// exactly like scalar floats. The only processor-specific code of the audio modules.
using Lanes = __m128;

constexpr std::size_t kLanes = 4;

inline Lanes broadcast(float value) noexcept {
    return _mm_set1_ps(value);
}

inline Lanes load(const float* from) noexcept {
    return _mm_loadu_ps(from);
}

inline void store(float* to, Lanes values) noexcept {
    _mm_storeu_ps(to, values);
}

// Two floats of each, alternately.
inline Lanes interleave(const float* first, const float* second) noexcept {
    const auto pair = [](const float* from) {
        return _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)));
    };
    return _mm_unpacklo_ps(pair(first), pair(second));
}

inline Lanes magnitude(Lanes values) noexcept {
    return _mm_andnot_ps(broadcast(-0.0f), values);
}

// Replaces values whose magnitude is below the limit by 0. A NaN is kept.
inline Lanes flushBelow(Lanes limit, Lanes values) noexcept {
    return _mm_andnot_ps(_mm_cmplt_ps(magnitude(values), limit), values);
}

// One bit per lane, lowest bit for the first: set if both magnitudes are at most the limit.
inline unsigned withinMask(Lanes limit, Lanes left, Lanes right) noexcept {
    const Lanes within =
        _mm_and_ps(_mm_cmple_ps(magnitude(left), limit), _mm_cmple_ps(magnitude(right), limit));
    return static_cast<unsigned>(_mm_movemask_ps(within));
}

// Keeps the first `count` lanes and zeroes the others.
inline Lanes keepFirst(std::size_t count, Lanes values) noexcept {
    const __m128i lane = _mm_setr_epi32(0, 1, 2, 3);
    const __m128i kept = _mm_cmplt_epi32(lane, _mm_set1_epi32(static_cast<int>(count)));
    return _mm_and_ps(values, _mm_castsi128_ps(kept));
}

// Transposes a 4 x 4 matrix: rows become columns.
inline void transpose(Lanes (&rows)[kLanes]) noexcept {
    _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]);
}

// Writes 1..4 frames as interleaved 16-bit integers: clamped to -1..1, multiplied by `scale` and
// truncated towards 0. A NaN becomes 0. With a scale of 32767, -32768 is never written.
inline void storePcm(void* to, Lanes left, Lanes right, float scale, std::size_t frames) noexcept {
    const auto converted = [scale](Lanes values) {
        const Lanes numbers = _mm_and_ps(values, _mm_cmpord_ps(values, values));
        const Lanes clamped = _mm_min_ps(_mm_max_ps(numbers, broadcast(-1.0f)), broadcast(1.0f));
        return _mm_cvttps_epi32(clamped * broadcast(scale));
    };
    const __m128i lefts = _mm_and_si128(converted(left), _mm_set1_epi32(0xFFFF));
    const __m128i pairs = _mm_or_si128(lefts, _mm_slli_epi32(converted(right), 16));
    if (frames == kLanes) {
        _mm_storeu_si128(static_cast<__m128i*>(to), pairs);
    } else {
        std::memcpy(to, &pairs, frames * 4);
    }
}

} // namespace lumivarda::dsp
