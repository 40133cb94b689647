// SPDX-License-Identifier: MIT
// What is printed and punched on a card, in the card's own units.
#pragma once

namespace percussomatic::card_layout {

inline constexpr int kWidth = 1149, kHeight = 3304;

// Width divided by height, written out so that rectangles are the same to the last bit.
inline constexpr double kAspect = 0.3477602905569007;

// Lines run from left to right. Step 1 is at the bottom, the end that enters the reader first.
inline constexpr int kHoleSize = 56;
inline constexpr int kFirstHoleX = 456, kHolePitchX = 107;  // centre of line 1; to the next line
inline constexpr int kFirstHoleY = 3078, kHolePitchY = 154; // centre of step 1; up to the next step

inline constexpr int kTitleTop = 38, kTitleBottom = 205;

} // namespace percussomatic::card_layout
