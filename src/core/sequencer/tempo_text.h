// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace percussomatic {

// Reads a typed tempo: a number of 40..240 beats per minute, with decimals and an exponent if need
// be, after blanks and before spaces. Nullopt for any other text.
std::optional<double> parseTempo(const std::wstring& text);

} // namespace percussomatic
