#include "cards/card_text.h"
#include "cards/punch_card.h"
#include "fuzz/fuzzing.h"

#include <cerrno>
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

// A card as text; a text that cannot be one is read as a number, beside the C library.

using namespace percussomatic;
using fuzz::require;

namespace {

enum class Outcome { read, invalid, outOfRange };

template <typename Value>
Outcome outcomeOf(ReadNumber<Value> (*read)(std::string_view), const std::string& text,
                  ReadNumber<Value>& number) {
    try {
        number = read(text);
        return Outcome::read;
    } catch (const std::invalid_argument&) {
        return Outcome::invalid;
    } catch (const std::out_of_range&) {
        return Outcome::outOfRange;
    }
}

void checkFloat(const std::string& text) {
    char* end = nullptr;
    errno = 0;
    const float expected = std::strtof(text.c_str(), &end);
    if (errno == ERANGE ? expected == 0.0f || std::abs(expected) <= FLT_MIN
                        : expected != 0.0f && std::abs(expected) <= FLT_MIN) {
        return; // what underflows is for each library to say
    }
    const Outcome wanted = end == text.c_str() ? Outcome::invalid
                           : errno == ERANGE   ? Outcome::outOfRange
                                               : Outcome::read;
    ReadNumber<float> number;
    require(outcomeOf(readFloat, text, number) == wanted, "floats are read as the C library does");
    if (wanted == Outcome::read) {
        require(number.value == expected || (std::isnan(number.value) && std::isnan(expected)),
                "a float has the value that the C library reads");
        require(std::isnan(expected) || text.c_str() + number.length == end,
                "a float ends where the C library ends it");
    }
}

template <typename Value>
void checkWhole(ReadNumber<Value> (*read)(std::string_view), const std::string& text,
                long long lowest, long long highest) {
    char* end = nullptr;
    const long long expected = std::strtoll(text.c_str(), &end, 10);
    const Outcome wanted = end == text.c_str()                       ? Outcome::invalid
                           : expected < lowest || expected > highest ? Outcome::outOfRange
                                                                     : Outcome::read;
    ReadNumber<Value> number;
    require(outcomeOf(read, text, number) == wanted, "integers are read as the C library does");
    if (wanted == Outcome::read) {
        require(number.value == static_cast<Value>(expected) && text.c_str() + number.length == end,
                "an integer has the value and the end that the C library gives it");
    }
}

void checkNumbers(std::string_view bytes) {
    const std::string text(bytes.substr(0, bytes.find('\0')));
    constexpr long long kHighest = std::numeric_limits<std::uint32_t>::max();
    checkFloat(text);
    checkWhole(readUnsigned, text, -kHighest, kHighest);
    checkWhole(readInteger, text, std::numeric_limits<std::int32_t>::min(),
               std::numeric_limits<std::int32_t>::max());
}

bool isUnit(float value) {
    return std::isnan(value) || (value >= 0.0f && value <= 1.0f);
}

// What a card brings that was read from anywhere.
void checkCard(const PunchCard& card) {
    bool units = isUnit(card.masterVolume) && isUnit(card.tempo);
    for (const float value : card.lineVolumes) {
        units = units && isUnit(value);
    }
    for (const float value : card.effectSends) {
        units = units && isUnit(value);
    }
    require(card.used && units, "volumes and sends are within 0 and 1");
    require(supportedLength(card.sequenceLength) == card.sequenceLength,
            "the panel has the length");

    const std::string written = writePunchCard(card, 3);
    CardReport report;
    const auto again = parsePunchCard(written, &report);
    require(again && report.version == 4, "a written card is read");
    require(writePunchCard(*again, 3) == written, "and written again the same");
    require(again->pattern.steps == card.pattern.steps, "with its rhythm");
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
    } catch (const std::invalid_argument&) { // a number that is none; the report has it
    } catch (const std::out_of_range&) {
    }
    require(card.has_value() != report.fault.has_value(), "a refused card has its reason");
    for (const CardRemark& remark : report.warnings) {
        require(wideFromUtf8(remark.text).has_value(), "remarks can be shown");
    }
    require(!report.fault || wideFromUtf8(report.fault->text), "reasons can be shown");
    if (card) {
        checkCard(*card);
    }
    return 0;
}
