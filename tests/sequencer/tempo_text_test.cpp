#include "sequencer/tempo_text.h"

#include <gtest/gtest.h>

namespace percussomatic {
namespace {

TEST(TempoText, IsOneNumberInRangeWithBlanksAround) {
    const struct {
        const wchar_t* text;
        std::optional<double> bpm;
    } kCases[] = {{L"40", 40.0},        {L"240", 240.0},    {L"39.999", {}}, {L"240.001", {}},
                  {L"120.5", 120.5},    {L"+1.2e2", 120.0}, {L"-120", {}},   {L"1e999", {}},
                  {L" \t\n120", 120.0}, {L"120  ", 120.0},  {L"120 \t", {}}, {L"120 1", {}},
                  {L"120x", {}},        {L"000100", 100.0}, {L"", {}},       {L"  ", {}},
                  {L"nan", {}},         {L"inf", {}}};
    for (const auto& each : kCases) {
        EXPECT_EQ(tempoOfText(each.text), each.bpm) << each.text;
    }
}

} // namespace
} // namespace percussomatic
