#include "sequencer/tempo_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

namespace percussomatic {
namespace {

TEST(TempoText, IsOneNumberInRangeWithBlanksAround) {
    const std::pair<const wchar_t*, std::optional<double>> cases[] = {
        {L"40", 40.0},        {L"240", 240.0},    {L"39.999", {}}, {L"240.001", {}},
        {L"120.5", 120.5},    {L"+1.2e2", 120.0}, {L"-120", {}},   {L"1e999", {}},
        {L" \t\n120", 120.0}, {L"120  ", 120.0},  {L"120 \t", {}}, {L"120 1", {}},
        {L"120x", {}},        {L"000100", 100.0}, {L"", {}},       {L"  ", {}},
        {L"nan", {}},         {L"inf", {}}};
    for (const auto& [text, bpm] : cases) {
        EXPECT_EQ(tempoOfText(text), bpm) << text;
    }
}

} // namespace
} // namespace percussomatic
