// SPDX-License-Identifier: MIT
// Input: a card, or a number if it does not begin with an underscore.
#include "cards/card_text.h"
#include "cards/punch_card.h"
#include "fuzz/fuzzing.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>

using namespace percussomatic;
using fuzz::require;

namespace {

template <typename Value>
void checkNumber(ReadNumber<Value> (*read)(std::string_view), std::string_view text) {
    try {
        const std::size_t length = read(text).length;
        require(length > 0 && length <= text.size(), "a number has a length within the text");
        require(read(text.substr(0, length)).length == length, "a number ends where it is said to");
    } catch (const std::invalid_argument&) { // not a number
    } catch (const std::out_of_range&) {
    }
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
        checkNumber(readFloat, bytes);
        checkNumber(readUnsigned, bytes);
        checkNumber(readInteger, bytes);
        return 0;
    }
    CardReport report;
    std::optional<PunchCard> card;
    try {
        card = parsePunchCard(bytes, &report);
    } catch (const std::logic_error&) { // a number that cannot be converted
    }
    require(card.has_value() != report.fault.has_value(), "a refused card has a reason");
    std::vector<CardMessage> remarks = report.warnings;
    remarks.push_back(report.fault.value_or(CardMessage{}));
    for (const CardMessage& remark : remarks) {
        require(wideFromUtf8(remark.text).has_value(), "messages are valid UTF-8");
    }
    if (card) {
        checkCard(*card);
    }
    return 0;
}
