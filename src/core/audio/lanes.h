#pragma once

#include <cstddef>
#include <cstring>
#include <emmintrin.h>

namespace lumivarda::dsp {

// Four floats computed at once with what every x64 processor has (SSE2). + - * round
// each lane exactly as single floats do. The one place that names the processor.
using Lanes = __m128;

constexpr std::size_t kLanes = 4;

inline Lanes allLanes(float value) noexcept {
    return _mm_set1_ps(value);
}

inline Lanes load(const float* from) noexcept {
    return _mm_loadu_ps(from);
}

inline void store(float* to, Lanes values) noexcept {
    _mm_storeu_ps(to, values);
}

// Of eight floats in a row, numbers 0, 2, 4, 6 and numbers 1, 3, 5, 7.
inline Lanes evenOf(Lanes low, Lanes high) noexcept {
    return _mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0));
}

inline Lanes oddOf(Lanes low, Lanes high) noexcept {
    return _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1));
}

inline Lanes magnitude(Lanes values) noexcept {
    return _mm_andnot_ps(allLanes(-0.0f), values);
}

// 0 where the magnitude is below the limit. A NaN stays.
inline Lanes flushedBelow(Lanes limit, Lanes values) noexcept {
    return _mm_andnot_ps(_mm_cmplt_ps(magnitude(values), limit), values);
}

// One bit per lane, the first lane lowest: both magnitudes are at most the limit.
inline unsigned bothWithin(Lanes limit, Lanes left, Lanes right) noexcept {
    const Lanes within =
        _mm_and_ps(_mm_cmple_ps(magnitude(left), limit), _mm_cmple_ps(magnitude(right), limit));
    return static_cast<unsigned>(_mm_movemask_ps(within));
}

// The first so many lanes, 0 in the others.
inline Lanes firstLanes(std::size_t count, Lanes values) noexcept {
    const __m128i number = _mm_setr_epi32(0, 1, 2, 3);
    const __m128i kept = _mm_cmplt_epi32(number, _mm_set1_epi32(static_cast<int>(count)));
    return _mm_and_ps(values, _mm_castsi128_ps(kept));
}

// Rows become columns.
inline void transpose(Lanes (&rows)[kLanes]) noexcept {
    _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]);
}

// 16-bit numbers in pairs, left first; truncated towards 0 after the scale. The clamp is
// symmetric: with 32767 as the scale, -32768 is never written. A NaN is 0.
inline void storePcm(void* to, Lanes left, Lanes right, float scale, std::size_t frames) noexcept {
    const auto converted = [scale](Lanes values) {
        const Lanes numbers = _mm_and_ps(values, _mm_cmpord_ps(values, values));
        const Lanes clamped = _mm_min_ps(_mm_max_ps(numbers, allLanes(-1.0f)), allLanes(1.0f));
        return _mm_cvttps_epi32(clamped * allLanes(scale));
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
