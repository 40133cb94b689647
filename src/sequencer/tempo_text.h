#pragma once

#include <optional>
#include <string>

namespace percussomatic {

// A typed tempo: a number of 40..240 beats per minute, with decimals and an exponent if need be,
// blanks before and spaces behind. Nothing for any other text.
std::optional<double> tempoOfText(const std::wstring& text);

} // namespace percussomatic
