// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace percussomatic {

// Conversion of the numbers and titles of a card, identical on every system and in every locale.
//
// Numbers are read as by std::stof, std::stoul and std::stoi in the C locale with a 32-bit long:
// leading blanks, a sign, then the longest prefix that is a number. The exceptions are the same,
// with the same texts.

template <typename Value>
struct ReadNumber {
    Value value{};
    std::size_t length = 0; // bytes consumed; the caller handles the rest
};

ReadNumber<float> readFloat(std::string_view text);
ReadNumber<std::uint32_t> readUnsigned(std::string_view text); // a minus wraps modulo 2^32
ReadNumber<std::int32_t> readInteger(std::string_view text);

std::string sixDecimals(float value); // "0.400000", "nan", "inf"

// Strict: nullopt for overlong forms, surrogates and code points above U+10FFFF.
std::optional<std::wstring> wideFromUtf8(std::string_view bytes);

// From UTF-16 or UTF-32, depending on the size of wchar_t. Invalid code points become U+FFFD.
std::string utf8FromWide(std::wstring_view text);

// For messages and terminals: control characters become '?', and text beyond maxLength is replaced
// by "...".
std::string printableUtf8(std::wstring_view text, std::size_t maxLength = std::wstring_view::npos);

// A piece of a card in double quotes, printable and at most 40 characters long. Accepts any bytes.
std::string quoted(std::string_view bytes);

} // namespace percussomatic
