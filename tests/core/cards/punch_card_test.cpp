// SPDX-License-Identifier: MIT
#include "cards/card_text.h"
#include "cards/punch_card.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <locale>
#include <numeric>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
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

// "" if the card is accepted, "refused", or the text of the conversion error.
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

// A decimal comma and grouped thousands, which must not affect cards.
struct Commas : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(PunchCardReader, ReadsEveryFieldInAnyLocale) {
    const std::locale former = std::locale::global(std::locale(std::locale::classic(), new Commas));
    const PunchCard card = parsePunchCard(kGood).value();
    EXPECT_TRUE(card.used && card.hasSettings && card.effectEnabled);
    EXPECT_EQ(card.title, wideFromUtf8("SL\u00d6W \U0001f941"));
    EXPECT_EQ(
        std::tuple(card.masterVolume, card.tempo, card.sequenceLength, card.effectPreset,
                   card.effect.effectReturn, card.effect.roomSize, card.effect.damping,
                   card.effect.width, card.effect.preDelayMs, card.lineVolumes[1],
                   card.instruments[7], card.effectSends[1]),
        std::tuple(0.75f, 0.333333f, 12u, 2, 0.34f, 0.92f, 0.42f, 0.125f, 26.0f, 0.1f, 1, 0.01f));
    EXPECT_TRUE(card.pattern.isSet(4, 11) && !card.pattern.isSet(4, 5));
    EXPECT_EQ(writePunchCard(card, 0), kGood);
    std::locale::global(former);
}

TEST(PunchCardReader, ReadsEveryVersionInBothSpellingsAndFillsInDefaults) {
    const std::vector<std::string> good = linesOf(kGood), plain = linesOf(writePunchCard({}, 4));
    const int heads[] = {1, 2, 7, 15};
    for (const std::string spelling : {"_PERCUSSOMATIC_CARD_V", "_PERCUSOMATIC_CARD_V"}) {
        for (int version = 1; version <= 4; ++version) {
            SCOPED_TRACE(spelling + std::to_string(version));
            const int head = heads[version - 1];
            std::vector<std::string> lines = good, expected = good;
            lines[0] = spelling + std::to_string(version);
            lines.erase(lines.begin() + head, lines.end() - kLineCount);
            std::copy(plain.begin() + head, plain.begin() + 15, expected.begin() + head);
            CardReport report;
            const auto card = parsePunchCard(joined(lines), &report);
            ASSERT_TRUE(card && report.warnings.empty());
            EXPECT_EQ(report.version, version);
            EXPECT_EQ(card->hasSettings, version >= 3);
            EXPECT_EQ(writePunchCard(*card, 4), joined(expected));
            parsePunchCard(joined(expected), &report); // warns that it would silence the panel
            EXPECT_EQ(report.warnings.size(), version <= 2 ? 1 : 0);
        }
    }
}

TEST(PunchCardReader, DeviationsAreAcceptedWithWarnings) {
    // The good card with one line replaced, and that line when the card is written again.
    const auto expectTaken = [](int line, const std::string& replacement,
                                const std::string& written, std::size_t warnings = 1) {
        SCOPED_TRACE(replacement);
        CardReport report;
        const auto card = parsePunchCard(withLine(line, replacement), &report);
        ASSERT_TRUE(card);
        EXPECT_EQ(writePunchCard(*card, 9), withLine(line, written));
        EXPECT_EQ(report.warnings.size(), warnings);
        for (const CardMessage& warning : report.warnings) {
            EXPECT_EQ(warning.line, line + (line == kGoodLines ? 1 : 0)) << warning.text;
        }
    };
    const std::string on = "INSTRUMENTS=" + commas("1", 12), off = "INSTRUMENTS=" + commas("0", 12);
    const std::string quiet = "LINE_VOLUMES=" + commas("0.000000", 6);
    expectTaken(2, "TITLE=\xC0\x80", "TITLE=PUNCH CARD 10"); // overlong
    expectTaken(2, "title=X", "TITLE=PUNCH CARD 10");
    expectTaken(3, "MASTER_VOLUME=nan", "MASTER_VOLUME=nan");
    expectTaken(4, "TEMPO_NORMALIZED=0.4 BPM", "TEMPO_NORMALIZED=0.400000");
    expectTaken(5, "SEQUENCE_LENGTH=-4294967287", "SEQUENCE_LENGTH=9");
    expectTaken(5, "SEQUENCE_LENGTH=0x10", "SEQUENCE_LENGTH=16", 2);
    expectTaken(6, "LINE_VOLUMES=0,2,-1,1,.5,1e-3",
                "LINE_VOLUMES=0.000000,1.000000,0.000000,1.000000,0.500000,0.001000", 2);
    expectTaken(6, quiet, quiet, 0);
    expectTaken(7, off, off, 0);
    expectTaken(7, on + "\r", "INSTRUMENTS=" + commas("1", 11) + ",0");
    expectTaken(7, "INSTRUMENTS=,01,+1,true,1,0,1,1,1,1,1,1", "INSTRUMENTS=0,0,0,0,1,0,1,1,1,1,1,1",
                4);
    expectTaken(7, "INSTRUMENTS=\xFF" + on.substr(13), "INSTRUMENTS=0" + on.substr(13));
    expectTaken(8, "EFFECT_ENABLED=-7", "EFFECT_ENABLED=1");
    expectTaken(12, "EFFECT_DAMPING=3e38",
                "EFFECT_DAMPING=300000000549775575777803994281145270272.000000");
    expectTaken(16, "1O00 00x\t0000002", "1000000000000000");
    expectTaken(18, "00100000000001001", "0010000000000100");
    expectTaken(21, "1111111111111111\nmore", "1111111111111111");
}

TEST(PunchCardReader, FaultsRefuseTheCardAndNameTheLine) {
    const auto expectRefused = [](int line, const std::string& replacement,
                                  const char* refusal = "refused", const char* words = "expected") {
        SCOPED_TRACE(replacement);
        CardReport report;
        EXPECT_EQ(refusalOf(withLine(line, replacement), report), refusal);
        ASSERT_TRUE(report.fault);
        EXPECT_EQ(report.fault->line, line);
        EXPECT_NE(report.fault->text.find(words), std::string::npos) << report.fault->text;
    };
    expectRefused(1, "_PERCUSSOMATIC_CARD_V5");
    expectRefused(1, "_PERCUSSOMATIC_CARD_V14", "refused", "expected _PERCUSSOMATIC_CARD_V1");
    expectRefused(1, "_PERCUSSOMATIC_CARD_V4\r", "refused", "file has Windows line ends");
    expectRefused(1, "\xEF\xBB\xBF_PERCUSSOMATIC_CARD_V4", "refused", "order mark; expected");
    expectRefused(1, "\xEF\xBB\xBF_PERCUSSOMATIC_CARD_V3\r", "refused", "mark and has Windows");
    expectRefused(3, " MASTER_VOLUME=1");
    expectRefused(3, std::string(41, 'x'), "refused", "x...\"; expected"); // 40 are quoted
    expectRefused(3, std::string("MASTER_VOLUME=\0001", 16), "invalid stof argument");
    expectRefused(5, "SEQUENCE_LENGTH=x", "invalid stoul argument");
    expectRefused(5, "SEQUENCE_LENGTH=4294967296", "stoul argument out of range");
    expectRefused(6, "LINE_VOLUMES=" + commas("1", 6) + ",");
    expectRefused(6, "LINE_VOLUMES=" + commas("x", 7)); // counted before they are converted
    expectRefused(9, "EFFECT_PRESET=2147483648", "stoi argument out of range");
    expectRefused(15, "EFFECT_SENDS=" + commas("0", 11) + ",y", "invalid stof argument");
}

TEST(PunchCardReader, RefusesATruncatedCardUnlessOnlyTheLastLineFeedIsMissing) {
    for (std::size_t size = 0; size < kGood.size(); ++size) {
        CardReport report;
        EXPECT_EQ(refusalOf(kGood.substr(0, size), report).empty(), size == kGood.size() - 1)
            << size;
    }
}

TEST(CardText, FloatsAreRefusedOnlyWhenTheyUnderflowInexactly) {
    const std::tuple<const char*, float, std::size_t> cases[] = {
        {"1.17549429e-38", 0.0f, 0}, {"1.17549433e-38 x", 0x1p-126f, 14},
        {"0x1p-149", 0x1p-149f, 8},  {"0x1.8p-149", 0.0f, 0},
        {"-0e-400", -0.0f, 7},       {"\t-0X.8p1e", -1.0f, 8},
        {"3.4028236e38", 0.0f, 0},   {"+.5e+", 0.5f, 3},
        {"0x.p1", 0.0f, 1}};
    for (const auto& [text, value, length] : cases) {
        ReadNumber<float> number; // length 0 if refused
        try {
            number = readFloat(text);
        } catch (const std::out_of_range&) {
        }
        EXPECT_EQ(std::tuple(number.value, number.length), std::tuple(value, length)) << text;
    }
}

TEST(CardText, Utf8IsStrictAndCoversAllCodePoints) {
    for (const char* text : {"\x7F", "\u0080", "\u07ff", "\u0800", "\ud7ff", "\ue000", "\uffff",
                             "\U00010000", "\U0001f941 x", "\U0010ffff"}) {
        EXPECT_EQ(utf8FromWide(wideFromUtf8(text).value()), text);
    }
    for (const char* broken : {"\x80", "\xC3(", "\xC1\xBF", "\xE0\x9F\xBF", "\xE2\x82",
                               "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF0\x9F\xA5",
                               "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFF", "good\xC3"}) {
        EXPECT_FALSE(wideFromUtf8(broken)) << quoted(broken);
    }
    const wchar_t high = 0xD83E, low = 0xDFFF;
    EXPECT_EQ(utf8FromWide(std::wstring{high, low}), "\U0001fbff");
    EXPECT_EQ(utf8FromWide(std::wstring{low, high, L'A'}), "\ufffd\ufffdA");
    PunchCard card;
    card.title = L"TWO\nLINES";
    EXPECT_EQ(parsePunchCard(writePunchCard(card, 0)).value().title, L"TWO LINES");
}

} // namespace
} // namespace percussomatic
