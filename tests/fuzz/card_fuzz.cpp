// SPDX-License-Identifier: MIT
// Input: a card, or, if it does not begin like one, a number, which is also read by the C library.
#include "cards/card_text.h"
#include "cards/punch_card.h"
#include "fuzz/fuzzing.h"

#include <algorithm>
#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

using namespace percussomatic;
using fuzz::require;

namespace {

enum class Outcome { read, invalid, outOfRange };

// `expected` and `end` are what the C library has read.
template <typename Value, typename Expected>
void checkNumber(ReadNumber<Value> (*read)(std::string_view), const std::string& text,
                 Expected expected, const char* end, bool inRange) {
    Outcome outcome = Outcome::read;
    ReadNumber<Value> number;
    try {
        number = read(text);
    } catch (const std::invalid_argument&) {
        outcome = Outcome::invalid;
    } catch (const std::out_of_range&) {
        outcome = Outcome::outOfRange;
    }
    require(outcome == (end == text.c_str() ? Outcome::invalid
                        : inRange           ? Outcome::read
                                            : Outcome::outOfRange),
            "a number is accepted if the C library accepts it");
    const auto isNaN = [](auto value) { return std::isnan(static_cast<double>(value)); };
    require(
        outcome != Outcome::read || (isNaN(expected) && isNaN(number.value)) ||
            (number.value == static_cast<Value>(expected) && text.c_str() + number.length == end),
        "a number has the value and the length that the C library reads");
}

void checkNumbers(std::string_view bytes) {
    const std::string text(bytes.substr(0, bytes.find('\0')));
    char* end = nullptr;
    errno = 0;
    const float real = std::strtof(text.c_str(), &end);
    const bool inRange = errno != ERANGE;
    const bool underflows = std::abs(real) <= FLT_MIN && (real != 0.0f || !inRange);
    if (!underflows) { // C libraries differ in what they report
        checkNumber(readFloat, text, real, end, inRange);
    }
    const long long whole = std::strtoll(text.c_str(), &end, 10);
    constexpr long long kMaxUnsigned = std::numeric_limits<std::uint32_t>::max();
    checkNumber(readUnsigned, text, whole, end, whole >= -kMaxUnsigned && whole <= kMaxUnsigned);
    checkNumber(readInteger, text, whole, end, whole == static_cast<std::int32_t>(whole));
}

void checkCard(const PunchCard& card) {
    const auto isUnit = [](float value) {
        return std::isnan(value) || (value >= 0.0f && value <= 1.0f);
    };
    require(isUnit(card.masterVolume) && isUnit(card.tempo) &&
                std::ranges::all_of(card.lineVolumes, isUnit) &&
                std::ranges::all_of(card.effectSends, isUnit),
            "volumes, tempo and sends are within 0 and 1");
    require(card.used && supportedLength(card.sequenceLength) == card.sequenceLength,
            "the panel has a switch for the length");

    const std::string written = writePunchCard(card, 3);
    CardReport report;
    const auto reread = parsePunchCard(written, &report);
    require(reread && report.version == 4, "a written card is accepted");
    require(writePunchCard(*reread, 3) == written && reread->pattern.steps == card.pattern.steps,
            "a written card is read unchanged");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = fuzz::textOf(data, size);
    if (!bytes.starts_with('_')) {
        checkNumbers(bytes);
        return 0;
    }
    CardReport report;
    std::optional<PunchCard> card;
    try {
        card = parsePunchCard(bytes, &report);
    } catch (const std::logic_error&) { // a number that cannot be converted
    }
    require(card.has_value() != report.fault.has_value(), "a refused card has a reason");
    std::vector<CardRemark> remarks = report.warnings;
    remarks.push_back(report.fault.value_or(CardRemark{}));
    for (const CardRemark& remark : remarks) {
        require(wideFromUtf8(remark.text).has_value(), "messages are valid UTF-8");
    }
    if (card) {
        checkCard(*card);
    }
    return 0;
}
