#include "cards/card_text.h"
#include "cards/punch_card.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <locale>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <tuple>
#include <typeinfo>
#include <vector>

namespace percussomatic {
namespace {

constexpr std::string_view kGood =
    "_PERCUSSOMATIC_CARD_V4\n"
    "TITLE=SL\u00d6W \U0001f941\n"
    "MASTER_VOLUME=0.750000\n"
    "TEMPO_NORMALIZED=0.333333\n"
    "SEQUENCE_LENGTH=12\n"
    "LINE_VOLUMES=0.000000,0.100000,0.250000,0.500000,0.900000,1.000000\n"
    "INSTRUMENTS=1,0,0,0,0,0,0,1,1,0,0,1\n"
    "EFFECT_ENABLED=1\n"
    "EFFECT_PRESET=2\n"
    "EFFECT_RETURN=0.340000\n"
    "EFFECT_ROOM_SIZE=0.920000\n"
    "EFFECT_DAMPING=0.420000\n"
    "EFFECT_WIDTH=0.125000\n"
    "EFFECT_PREDELAY_MS=26.000000\n"
    "EFFECT_SENDS=0.000000,0.010000,0.020000,0.030000,0.040000,0.050000,"
    "0.060000,0.070000,0.080000,0.090000,0.100000,1.000000\n"
    "1000000000000001\n"
    "0100000000000010\n"
    "0010000000000100\n"
    "0001000000001000\n"
    "0000100000010000\n"
    "1111111111111111\n";
constexpr int kGoodLines = 21;

std::vector<std::string> linesOf(std::string_view text) {
    std::vector<std::string> lines;
    while (!text.empty()) {
        lines.emplace_back(text.substr(0, text.find('\n')));
        text.remove_prefix(lines.back().size() + 1);
    }
    return lines;
}

std::string joined(const std::vector<std::string>& lines) {
    return std::accumulate(lines.begin(), lines.end(), std::string(),
                           [](auto text, const auto& line) { return text + line + '\n'; });
}

std::string withLine(int line, std::string_view replacement) {
    std::vector<std::string> lines = linesOf(kGood);
    lines[static_cast<std::size_t>(line - 1)] = replacement;
    return joined(lines);
}

// "" for a card that is read, "refused", or the words of the conversion error.
std::string refusalOf(std::string_view text, CardReport& report) {
    try {
        return parsePunchCard(text, &report) ? "" : "refused";
    } catch (const std::logic_error& error) {
        return error.what();
    }
}

std::string commas(const std::string& field, int count) {
    return count > 1 ? field + "," + commas(field, count - 1) : field;
}

// A locale with a decimal comma and grouped thousands must not reach the cards.
struct Commas : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(PunchCardReader, KnowsEveryFieldInItsOrderInAnyLocale) {
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new Commas));
    const PunchCard card = parsePunchCard(kGood).value();
    EXPECT_TRUE(card.used && card.hasSettings && card.effectEnabled);
    EXPECT_EQ(card.title, wideFromUtf8("SL\u00d6W \U0001f941"));
    EXPECT_EQ(std::tuple(card.masterVolume, card.tempo, card.sequenceLength, card.effectPreset),
              std::tuple(0.75f, 0.333333f, 12u, 2));
    EXPECT_EQ(std::tuple(card.effect.effectReturn, card.effect.roomSize, card.effect.damping,
                         card.effect.width, card.effect.preDelayMs),
              std::tuple(0.34f, 0.92f, 0.42f, 0.125f, 26.0f));
    EXPECT_EQ(std::tuple(card.lineVolumes[1], card.instruments[7], card.effectSends[1]),
              std::tuple(0.1f, 1, 0.01f));
    EXPECT_TRUE(card.pattern.isSet(4, 11) && !card.pattern.isSet(4, 5));
    EXPECT_EQ(writePunchCard(card, 0), kGood);
    std::locale::global(former);
}

// Old cards bring less; what they lack is at its default.
TEST(PunchCardReader, ReadsEveryVersionInBothSpellings) {
    const std::vector<std::string> good = linesOf(kGood);
    const std::vector<std::string> plain = linesOf(writePunchCard({}, 4));
    const int heads[] = {1, 2, 7, 15};
    for (const std::string spelling : {"_PERCUSSOMATIC_CARD_V", "_PERCUSOMATIC_CARD_V"}) {
        for (int version = 1; version <= 4; ++version) {
            SCOPED_TRACE(spelling + std::to_string(version));
            const int head = heads[version - 1];
            std::vector<std::string> lines(good.begin(), good.begin() + head);
            lines[0] = spelling + std::to_string(version);
            lines.insert(lines.end(), good.end() - 6, good.end());
            CardReport report;
            const auto card = parsePunchCard(joined(lines), &report);
            ASSERT_TRUE(card);
            EXPECT_EQ(report.version, version);
            EXPECT_TRUE(report.warnings.empty());
            EXPECT_EQ(card->hasSettings, version >= 3);
            std::vector<std::string> expected = good;
            std::copy(plain.begin() + head, plain.begin() + 15, expected.begin() + head);
            EXPECT_EQ(writePunchCard(*card, 4), joined(expected));
        }
    }
}

// One line of the good card replaced: how it is written afterwards, and how many warnings.
TEST(PunchCardReader, TakesOddLinesAsItShould) {
    const auto expectTaken = [](int line, const std::string& replacement,
                                const std::string& afterwards, std::size_t warnings = 1) {
        SCOPED_TRACE(replacement);
        CardReport report;
        const auto card = parsePunchCard(withLine(line, replacement), &report);
        ASSERT_TRUE(card);
        EXPECT_EQ(writePunchCard(*card, 9), withLine(line, afterwards));
        EXPECT_EQ(report.warnings.size(), warnings);
        for (const CardMessage& warning : report.warnings) {
            EXPECT_EQ(warning.line, line + (line == kGoodLines ? 1 : 0)) << warning.text;
        }
    };
    const std::string on = "INSTRUMENTS=" + commas("1", 12);
    expectTaken(2, "TITLE=\xC0\x80", "TITLE=PUNCH CARD 10"); // overlong
    expectTaken(2, "TITLE=", "TITLE=PUNCH CARD 10", 0);
    expectTaken(3, "MASTER_VOLUME=1.5", "MASTER_VOLUME=1.000000");
    expectTaken(3, "MASTER_VOLUME=nan", "MASTER_VOLUME=nan");
    expectTaken(4, "TEMPO_NORMALIZED=0.4 BPM", "TEMPO_NORMALIZED=0.400000");
    expectTaken(5, "SEQUENCE_LENGTH=7", "SEQUENCE_LENGTH=16");
    expectTaken(5, "SEQUENCE_LENGTH=-4294967287", "SEQUENCE_LENGTH=9");
    expectTaken(5, "SEQUENCE_LENGTH=0x10", "SEQUENCE_LENGTH=16", 2);
    expectTaken(6, "LINE_VOLUMES=0,2,-1,1,.5,1e-3",
                "LINE_VOLUMES=0.000000,1.000000,0.000000,1.000000,0.500000,0.001000", 2);
    expectTaken(7, on + "\r", "INSTRUMENTS=" + commas("1", 11) + ",0");
    expectTaken(7, "INSTRUMENTS=,01,+1,true,1,0,1,1,1,1,1,1", "INSTRUMENTS=0,0,0,0,1,0,1,1,1,1,1,1",
                4);
    expectTaken(7, "INSTRUMENTS=\xFF" + on.substr(13), "INSTRUMENTS=0" + on.substr(13));
    expectTaken(8, "EFFECT_ENABLED=-7", "EFFECT_ENABLED=1");
    expectTaken(12, "EFFECT_DAMPING=3e38",
                "EFFECT_DAMPING=300000000549775575777803994281145270272.000000");
    expectTaken(16, "1O00 00x\t0000002", "1000000000000000");
    expectTaken(17, "0100000000000010 \t\r", "0100000000000010", 0);
    expectTaken(18, "00100000000001001", "0010000000000100");
    expectTaken(21, "1111111111111111\nmore", "1111111111111111");
}

TEST(PunchCardReader, RefusesAndNamesTheLine) {
    const auto expectRefused = [](int line, const std::string& replacement,
                                  const char* refusal = "refused") {
        SCOPED_TRACE(replacement);
        CardReport report;
        EXPECT_EQ(refusalOf(withLine(line, replacement), report), refusal);
        ASSERT_TRUE(report.fault);
        EXPECT_EQ(report.fault->line, line);
        EXPECT_NE(report.fault->text.find("expected"), std::string::npos) << report.fault->text;
    };
    expectRefused(1, "_PERCUSSOMATIC_CARD_V5");
    expectRefused(1, "_PERCUSSOMATIC_CARD_V4\r");
    expectRefused(1, "\xEF\xBB\xBF_PERCUSSOMATIC_CARD_V4");
    expectRefused(3, " MASTER_VOLUME=1");
    expectRefused(3, std::string("MASTER_VOLUME=\0001", 16), "invalid stof argument");
    expectRefused(3, "MASTER_VOLUME=1e39", "stof argument out of range");
    expectRefused(5, "SEQUENCE_LENGTH=x", "invalid stoul argument");
    expectRefused(5, "SEQUENCE_LENGTH=4294967296", "stoul argument out of range");
    expectRefused(5, "SEQUENCE_LENGTH=-4294967296", "stoul argument out of range");
    expectRefused(6, "LINE_VOLUMES=" + commas("1", 6) + ",");
    expectRefused(6, "LINE_VOLUMES=" + commas("x", 7)); // counted before they are read
    expectRefused(9, "EFFECT_PRESET=2147483648", "stoi argument out of range");
    expectRefused(9, "EFFECT_RETURN=0.2"); // out of turn
    expectRefused(15, "EFFECT_SENDS=" + commas("0", 11) + ",y", "invalid stof argument");
    expectRefused(16, "100000000000000");
}

TEST(PunchCardReader, NeedsAllOfACardButItsLastLineEnd) {
    for (std::size_t size = 0; size < kGood.size() - 1; ++size) {
        CardReport report;
        ASSERT_NE(refusalOf(kGood.substr(0, size), report), "") << size;
        const auto ends = std::ranges::count(kGood.substr(0, size), '\n');
        // A line that is cut may still do; then the next is missed.
        EXPECT_TRUE(report.fault->line == ends + 1 || report.fault->line == ends + 2) << size;
    }
    EXPECT_TRUE(parsePunchCard(kGood.substr(0, kGood.size() - 1)));
}

#ifndef _WIN32
// This system's library reads as the card's reader does, down to the last place.
TEST(CardText, FloatsAreReadAsTheLibraryReadsThem) {
    std::mt19937 dice(20);
    const std::string_view pieces[] = {"0", "1",  "9",  "5",   ".",   "e",   "E-3", "e-4",  "0x",
                                       "p", "-",  "+",  " ",   "inf", "nan", "f",   "p-12", "e3",
                                       "8", "00", "\t", "p-1", "99",  "a",   "X",   ",",    "e+3"};
    const auto outcome = [](const auto& read) -> std::string {
        try {
            const auto [value, length] = read();
            return sixDecimals(value * 0x1p100f) + " " + std::to_string(length);
        } catch (const std::logic_error& error) {
            return typeid(error).name();
        }
    };
    for (int round = 0; round < 60000; ++round) {
        std::string text;
        for (auto left = dice() % 9; left > 0; --left) {
            text += pieces[dice() % std::size(pieces)];
        }
        if (round % 3 == 0) { // near the smallest normal float
            text = std::to_string(117549420 + dice() % 30) + "e-46";
        }
        const auto library = [&text] {
            std::size_t end = 0;
            const float value = std::stof(text, &end);
            return std::pair(value, end);
        };
        ASSERT_EQ(outcome([&text] { return readFloat(text); }), outcome(library)) << text;
    }
}

#endif

TEST(CardText, Utf8IsStrictAndReachesBeyondTheBasicPlane) {
    for (const char* text : {"\x7F", "\u0080", "\u07ff", "\u0800", "\ud7ff", "\ue000", "\uffff",
                             "\U00010000", "\U0001f941 x", "\U0010ffff"}) {
        EXPECT_EQ(utf8FromWide(wideFromUtf8(text).value()), text);
    }
    for (const char* broken : {"\x80", "\xC3(", "\xC1\xBF", "\xE0\x9F\xBF", "\xE2\x82",
                               "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF0\x9F\xA5",
                               "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "good\xC3"}) {
        EXPECT_FALSE(wideFromUtf8(broken)) << quoted(broken);
    }
    const wchar_t high = 0xD83E, low = 0xDD41;
    EXPECT_EQ(utf8FromWide(std::wstring{high, low}), "\U0001f941");
    EXPECT_EQ(utf8FromWide(std::wstring{low, high, L'A'}), "\ufffd\ufffdA");
    PunchCard card;
    card.title = L"TWO\nLINES";
    EXPECT_EQ(parsePunchCard(writePunchCard(card, 0)).value().title, L"TWO LINES");
}

} // namespace
} // namespace percussomatic
