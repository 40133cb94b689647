// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <emmintrin.h>

namespace percussomatic {

// Four pixels in a SIMD register (SSE2, which every x64 processor has). Two channels of each pixel
// are computed at a time, in 16-bit lanes, with the same results as one channel at a time.
using FourPixels = __m128i;

inline FourPixels loadFour(const std::uint32_t* from) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const FourPixels*>(from));
}

inline void storeFour(std::uint32_t* to, FourPixels pixels) noexcept {
    _mm_storeu_si128(reinterpret_cast<FourPixels*>(to), pixels);
}

inline FourPixels evenChannels(FourPixels pixels) noexcept {
    return _mm_and_si128(pixels, _mm_set1_epi16(0xFF));
}

inline FourPixels oddChannels(FourPixels pixels) noexcept {
    return _mm_srli_epi16(pixels, 8);
}

// Premultiplied source over destination, rounded, with transparency = 255 - alpha:
// source + (destination * transparency + 127) / 255. For a sum below 65535, sum / 255 is exactly
// (sum + 1 + sum / 256) / 256.
inline FourPixels blendFour(FourPixels source, FourPixels destination) noexcept {
    const __m128i alpha = _mm_srli_epi32(source, 24);
    const __m128i transparency =
        _mm_sub_epi16(_mm_set1_epi16(255), _mm_or_si128(alpha, _mm_slli_epi32(alpha, 16)));
    const auto attenuated = [&](__m128i channels) {
        const __m128i sum =
            _mm_add_epi16(_mm_mullo_epi16(channels, transparency), _mm_set1_epi16(127));
        return _mm_srli_epi16(
            _mm_add_epi16(_mm_add_epi16(sum, _mm_set1_epi16(1)), _mm_srli_epi16(sum, 8)), 8);
    };
    const __m128i even = attenuated(evenChannels(destination));
    const __m128i odd = attenuated(oddChannels(destination));
    return _mm_add_epi32(source, _mm_or_si128(even, _mm_slli_epi16(odd, 8)));
}

// Linear interpolation: (a * (256 - weight) + b * weight + 128) / 256. One weight of 0..256 in each
// 16-bit lane.
inline FourPixels interpolateFour(FourPixels a, FourPixels b, __m128i weight) noexcept {
    const __m128i remainder = _mm_sub_epi16(_mm_set1_epi16(256), weight);
    const auto sum = [&](__m128i x, __m128i y) {
        const __m128i products =
            _mm_add_epi16(_mm_mullo_epi16(x, remainder), _mm_mullo_epi16(y, weight));
        return _mm_add_epi16(products, _mm_set1_epi16(128));
    };
    const __m128i even = sum(evenChannels(a), evenChannels(b));
    const __m128i odd = sum(oddChannels(a), oddChannels(b));
    return _mm_or_si128(_mm_srli_epi16(even, 8), _mm_andnot_si128(_mm_set1_epi16(0xFF), odd));
}

// The pixels at four addresses, and the pixel after each.
struct PixelPairs {
    FourPixels first, second;
};

inline PixelPairs gatherPairs(const std::uint32_t* const (&pairs)[4]) noexcept {
    const auto pair = [](const std::uint32_t* from) {
        return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
    };
    const __m128i low = _mm_unpacklo_epi32(pair(pairs[0]), pair(pairs[1]));
    const __m128i high = _mm_unpacklo_epi32(pair(pairs[2]), pair(pairs[3]));
    return {_mm_unpacklo_epi64(low, high), _mm_unpackhi_epi64(low, high)};
}

// Rounded averages of four blocks of 2 x 2 pixels, from two rows of eight pixels.
inline FourPixels averageFour(const std::uint32_t* upper, const std::uint32_t* lower) noexcept {
    const auto average = [&](auto channels) {
        const auto column = [&](int x) {
            return _mm_add_epi16(channels(loadFour(upper + x)), channels(loadFour(lower + x)));
        };
        const __m128 left = _mm_castsi128_ps(column(0)), right = _mm_castsi128_ps(column(4));
        const __m128i even = _mm_castps_si128(_mm_shuffle_ps(left, right, _MM_SHUFFLE(2, 0, 2, 0)));
        const __m128i odd = _mm_castps_si128(_mm_shuffle_ps(left, right, _MM_SHUFFLE(3, 1, 3, 1)));
        return _mm_srli_epi16(_mm_add_epi16(_mm_add_epi16(even, odd), _mm_set1_epi16(2)), 2);
    };
    return _mm_or_si128(average(evenChannels), _mm_slli_epi16(average(oddChannels), 8));
}

} // namespace percussomatic
