// SPDX-License-Identifier: MIT
#include "cards/card_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <limits>
#include <stdexcept>

namespace percussomatic {

namespace {

constexpr char32_t kReplacementCharacter = 0xFFFD;
constexpr char32_t kFirstHighSurrogate = 0xD800, kFirstLowSurrogate = 0xDC00,
                   kLastSurrogate = 0xDFFF;
constexpr char32_t kFirstSupplementary = 0x10000, kLastCharacter = 0x10FFFF;

std::size_t blanksAt(std::string_view text) {
    constexpr std::string_view kBlanks = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kBlanks);
    return first == std::string_view::npos ? text.size() : first;
}

// The blanks and the sign before a number.
struct NumberPrefix {
    std::size_t length = 0;
    bool negative = false;
};

NumberPrefix readPrefix(std::string_view text) {
    const std::size_t sign = blanksAt(text);
    const bool negative = text.substr(sign, 1) == "-";
    return {sign + (negative || text.substr(sign, 1) == "+" ? 1 : 0), negative};
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool startsHexadecimal(std::string_view text) {
    if (!text.starts_with("0x") && !text.starts_with("0X")) {
        return false;
    }
    text.remove_prefix(text.substr(2, 1) == "." ? 3 : 2);
    return !text.empty() && isHexDigit(text.front());
}

template <typename Value>
std::from_chars_result convert(std::string_view text, Value& value, std::chars_format format) {
    return std::from_chars(text.data(), text.data() + text.size(), value, format);
}

// Unsigned decimal digits. `name` is the standard function named in exceptions.
ReadNumber<std::uint32_t> readDigits(std::string_view text, const char* name) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument) {
        throw std::invalid_argument(std::string("invalid ") + name + " argument");
    }
    if (error != std::errc{}) {
        throw std::out_of_range(std::string(name) + " argument out of range");
    }
    return {value, static_cast<std::size_t>(end - text.data())};
}

template <std::size_t Count>
void appendUtf8(std::string& bytes, char32_t lead, char32_t character) {
    bytes += static_cast<char>(lead | character >> (6 * Count));
    for (std::size_t left = Count; left > 0; --left) {
        bytes += static_cast<char>(0x80U | (character >> (6 * (left - 1)) & 0x3FU));
    }
}

void appendUtf8(std::string& bytes, char32_t character) {
    if (character < 0x80) {
        appendUtf8<0>(bytes, 0, character);
    } else if (character < 0x800) {
        appendUtf8<1>(bytes, 0xC0, character);
    } else if (character < kFirstSupplementary) {
        appendUtf8<2>(bytes, 0xE0, character);
    } else {
        appendUtf8<3>(bytes, 0xF0, character);
    }
}

void appendWide(std::wstring& text, char32_t character) {
    if (sizeof(wchar_t) == 2 && character >= kFirstSupplementary) {
        const char32_t offset = character - kFirstSupplementary;
        text += static_cast<wchar_t>(kFirstHighSurrogate + (offset >> 10));
        text += static_cast<wchar_t>(kFirstLowSurrogate + (offset & 0x3FFU));
    } else {
        text += static_cast<wchar_t>(character);
    }
}

bool isSurrogate(char32_t character) {
    return character >= kFirstHighSurrogate && character <= kLastSurrogate;
}

// Removes one character from the front; nullopt if it is not valid UTF-8.
std::optional<char32_t> takeUtf8(std::string_view& bytes) {
    struct Form {
        unsigned leadMask, lead; // of the first byte
        std::size_t trailing;    // bytes that follow
        char32_t min;            // lower code points have a shorter form
    };
    constexpr std::array<Form, 4> kForms{{{0x80, 0x00, 0, 0},
                                          {0xE0, 0xC0, 1, 0x80},
                                          {0xF0, 0xE0, 2, 0x800},
                                          {0xF8, 0xF0, 3, 0x10000}}};
    const auto byteAt = [&](std::size_t at) { return static_cast<unsigned char>(bytes[at]); };
    for (const Form& form : kForms) {
        if ((byteAt(0) & form.leadMask) != form.lead) {
            continue;
        }
        if (bytes.size() <= form.trailing) {
            return std::nullopt;
        }
        char32_t character = byteAt(0) & ~form.leadMask;
        for (std::size_t at = 1; at <= form.trailing; ++at) {
            if ((byteAt(at) & 0xC0U) != 0x80) {
                return std::nullopt;
            }
            character = character << 6 | (byteAt(at) & 0x3FU);
        }
        if (character < form.min || character > kLastCharacter || isSurrogate(character)) {
            return std::nullopt;
        }
        bytes.remove_prefix(form.trailing + 1);
        return character;
    }
    return std::nullopt;
}

} // namespace

// C libraries disagree in the last digit on what is an underflow. Here it is a number that rounds
// to less than the smallest normal float and cannot be stored exactly. Decimals that small count as
// inexact: an exact one has at least 89 digits.
ReadNumber<float> readFloat(std::string_view text) {
    constexpr double kTiny = 0x1.ffffffp-127; // rounds up to the smallest normal float
    const NumberPrefix prefix = readPrefix(text);
    std::string_view number = text.substr(prefix.length);
    const bool hexadecimal = startsHexadecimal(number);
    if (hexadecimal) {
        number.remove_prefix(2);
    }
    const auto format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    float value = 0.0f;
    const auto [end, error] = convert(number, value, format);
    if (error == std::errc::invalid_argument || number.starts_with('-')) {
        throw std::invalid_argument("invalid stof argument");
    }
    double precise = 0.0;
    convert(number, precise, format);
    const bool tiny = precise != 0.0 && precise < kTiny;
    const bool exact = hexadecimal && static_cast<double>(value) == precise;
    if (error != std::errc{} || (tiny && !exact)) {
        throw std::out_of_range("stof argument out of range");
    }
    return {prefix.negative ? -value : value, static_cast<std::size_t>(end - text.data())};
}

ReadNumber<std::uint32_t> readUnsigned(std::string_view text) {
    const NumberPrefix prefix = readPrefix(text);
    const auto digits = readDigits(text.substr(prefix.length), "stoul");
    return {prefix.negative ? 0U - digits.value : digits.value, prefix.length + digits.length};
}

ReadNumber<std::int32_t> readInteger(std::string_view text) {
    constexpr auto kMax = std::uint32_t{std::numeric_limits<std::int32_t>::max()};
    const NumberPrefix prefix = readPrefix(text);
    const auto digits = readDigits(text.substr(prefix.length), "stoi");
    if (digits.value > kMax + (prefix.negative ? 1U : 0U)) {
        throw std::out_of_range("stoi argument out of range");
    }
    const std::uint32_t value = prefix.negative ? 0U - digits.value : digits.value;
    return {static_cast<std::int32_t>(value), prefix.length + digits.length};
}

std::string sixDecimals(float value) {
    std::array<char, 64> digits{}; // the largest float has 39 before the point
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                      std::chars_format::fixed, 6);
    return {digits.data(), result.ptr};
}

std::optional<std::wstring> wideFromUtf8(std::string_view bytes) {
    std::wstring text;
    while (!bytes.empty()) {
        const std::optional<char32_t> character = takeUtf8(bytes);
        if (!character) {
            return std::nullopt;
        }
        appendWide(text, *character);
    }
    return text;
}

std::string printableUtf8(std::wstring_view text, std::size_t maxLength) {
    std::wstring shown(text.substr(0, maxLength));
    std::ranges::replace_if(
        shown, [](wchar_t c) { return c < L' ' || (c >= 0x7F && c < 0xA0); }, L'?');
    return utf8FromWide(shown) + (text.size() > maxLength ? "..." : "");
}

std::string quoted(std::string_view bytes) {
    constexpr std::size_t kMaxLength = 40;
    std::wstring shown;
    if (const auto wide = wideFromUtf8(bytes)) {
        shown = *wide;
    } else {
        std::ranges::transform(bytes, std::back_inserter(shown),
                               [](unsigned char c) { return c < 0x80 ? wchar_t{c} : L'?'; });
    }
    return '"' + printableUtf8(shown, kMaxLength) + '"';
}

std::string utf8FromWide(std::wstring_view text) {
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        auto character = static_cast<char32_t>(text[at]);
        const auto next = at + 1 < text.size() ? static_cast<char32_t>(text[at + 1]) : 0;
        const bool paired = character >= kFirstHighSurrogate && character < kFirstLowSurrogate &&
                            next >= kFirstLowSurrogate && next <= kLastSurrogate;
        if (paired) {
            character = kFirstSupplementary + ((character - kFirstHighSurrogate) << 10) +
                        (next - kFirstLowSurrogate);
            ++at;
        } else if (isSurrogate(character) || character > kLastCharacter) {
            character = kReplacementCharacter;
        }
        appendUtf8(bytes, character);
    }
    return bytes;
}

} // namespace percussomatic
