// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace percussomatic {

// Parses a typed tempo in beats per minute. Decimals, an exponent, leading white space and trailing
// spaces are accepted; nullopt for any other text and outside kMinBpm..kMaxBpm.
std::optional<double> parseTempo(const std::wstring& text);

} // namespace percussomatic
