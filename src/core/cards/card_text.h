#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace percussomatic {

// Numbers and titles of a card's text, the same on every system and in every locale.
//
// Numbers are read as std::stof, std::stoul and std::stoi read them in the C locale where long has
// 32 bits: leading blanks, a sign, then as much as belongs to a number. They throw what those
// throw, in the same words.

template <typename Value>
struct ReadNumber {
    Value value{};
    std::size_t length = 0; // bytes read; the rest is left to the caller
};

ReadNumber<float> readFloat(std::string_view text);
ReadNumber<std::uint32_t> readUnsigned(std::string_view text); // a minus wraps modulo 2^32
ReadNumber<std::int32_t> readInteger(std::string_view text);

std::string sixDecimals(float value); // "0.400000", "nan", "inf"

// Strict: no overlong forms, no surrogates, nothing beyond U+10FFFF.
std::optional<std::wstring> wideFromUtf8(std::string_view bytes);

// From UTF-16 or UTF-32, as wide as wchar_t is; what is no character becomes U+FFFD.
std::string utf8FromWide(std::wstring_view text);

// For a message or a terminal: no control characters, and no more than so many characters.
std::string printableUtf8(std::wstring_view text, std::size_t longest = std::wstring_view::npos);

// A piece of a card, whatever bytes it has, as a message shows it.
std::string quoted(std::string_view bytes);

} // namespace percussomatic
