// SPDX-License-Identifier: MIT
// Positions of the holes and the title on a card, in card units (kWidth x kHeight).
#pragma once

namespace percussomatic::card_layout {

inline constexpr int kWidth = 1149, kHeight = 3304;

// Width divided by height, as a literal so that every build computes the same rectangles.
inline constexpr double kAspect = 0.3477602905569007;

// Lines are columns from left to right. Steps run from bottom to top; the bottom enters the reader
// first.
inline constexpr int kHoleSize = 56;
// First: centre of a hole of line 1 or step 1. Pitch: distance to the next line or step.
inline constexpr int kFirstHoleX = 456, kHolePitchX = 107;
inline constexpr int kFirstHoleY = 3078, kHolePitchY = 154; // upwards

inline constexpr int kTitleTop = 38, kTitleBottom = 205;

} // namespace percussomatic::card_layout
