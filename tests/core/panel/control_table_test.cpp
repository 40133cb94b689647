// SPDX-License-Identifier: MIT
#include "assets/assets.h"
#include "audio/sample_bank.h"
#include "audio/sound_engine.h"
#include "panel/control_geometry.h"
#include "panel/control_names.h"
#include "panel/control_state.h"
#include "sequencer/sequencer.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace percussomatic {
namespace {

constexpr double kFullHdScale = 1040.0 / 5153.0; // of the panel on a screen of 1920 x 1080

class ControlLayout : public testing::Test {
protected:
    ControlLayout() { resetControlState(); }
    ~ControlLayout() override { resetControlState(); }
};

TEST_F(ControlLayout, RowsAndTheirRolesAreUnchanged) {
    std::ostringstream text;
    for (int index = 0; index < kControlCount; ++index) {
        const ControlRow& row = controlRow(index);
        const auto& [kind, line, step, length] = controlRole(index);
        text << row.name << row.image << row.imageOn << row.type << int{row.visible} << ' ' << row.x
             << ' ' << row.y << ' ' << row.width << ' ' << row.height << ' ' << isInteractive(row)
             << static_cast<int>(kind) << ' ' << line << ' ' << step << ' ' << length << '\n';
    }
    std::uint64_t hash = 14695981039346656037U; // FNV-1a
    for (const char c : text.str()) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211U;
    }
    EXPECT_EQ(hash, 4597475360061476823U) << text.str();
    EXPECT_EQ(findControl("PW_001"), findControl("pw_001"));
    EXPECT_EQ(findControl("pw_00"), kNoControl);
}

TEST_F(ControlLayout, InstrumentSwitchesAreOnTheirLineAndRecordingsLoadInOrder) {
    const char* const names[] = {"rolling_snare", "cymbal_1",   "cymbal_2", "snare",
                                 "timbal_2",      "charleston", "triangle", "clave",
                                 "block_2",       "timbal_1",   "block_1",  "bass_drum"};
    const std::vector<Sample>& samples = soundEngine().samples;
    loadLineSamples();
    for (std::size_t position = 0; position < kInstrumentCount; ++position) {
        SCOPED_TRACE(position);
        const int line = static_cast<int>(position % kLineCount), b = position < kLineCount ? 0 : 1;
        const ControlRow& row = controlRow(findControl(control::instrumentSwitch(position)));
        const ControlRow& step = controlRow(stepButtonIndex(line, 0));
        EXPECT_NEAR(2 * row.y + row.height, 2 * step.y + step.height, 20);
        EXPECT_EQ(row.x, b == 0 ? 1745 : 2040);
        EXPECT_EQ(sampleIndexOfSwitch(position), sampleIndexOf(line, b));
        const std::size_t index = sampleIndexOf(line, b); // also of the sends
        EXPECT_EQ(sequencer().sampleIndices[index], static_cast<int>(index));
        const auto recording = parseWave(findAsset(names[index] + std::string(".wav")).span());
        ASSERT_TRUE(recording && samples.size() == kInstrumentCount);
        EXPECT_TRUE(samples[index].left == recording->left);
    }
}

TEST_F(ControlLayout, ViewScaleFitsThePanelAndRectanglesAreRoundedOutwards) {
    EXPECT_EQ(viewScale({1618, 1040}), 1618.0 / 8019.0);
    EXPECT_EQ(viewScale({1619, 1040}), kFullHdScale);
    EXPECT_EQ(viewScale({0, 0}), 1.0);
    const int slider = findControl("slider_001");
    controlState().offset(slider) = 325;
    EXPECT_EQ(controlClientRect(slider, kFullHdScale), (PixelRect{212, 231, 225, 264}));
    EXPECT_EQ(controlClientRect(findControl("pw_001"), 0.5), (PixelRect{740, 2219, 820, 2403}));
}

TEST_F(ControlLayout, HitTestFindsTheTopmostControl) {
    controlState().offset(findControl("slider_002")) = 650;
    const struct {
        int x, y;
        double scale;
        std::string_view name;
    } cases[] = {
        {2552, 1130, 1.0, "pannello_frontale_001"}, // left of the first step button
        {2730, 1313, 1.0, "bottone_001"},
        {2731, 1313, 1.0, "bottone_002"},
        {5399, 4698, 1.0, "sw_015"}, // covers most of sw_014
        {5400, 4698, 1.0, "sw_014"},
        {5259, 4699, 1.0, "pannello_sotto_001"},
        {1377, 1621, 1.0, "slider_002"},           // at its offset
        {1276, 565, 0.5, "pannello_frontale_001"}, // truncated to layout units
        {1277, 565, 0.5, "bottone_001"},
        {23, 0, 1.0, ""},
        {2600, 1200, 0.0, ""},
        {2600, 1200, std::numeric_limits<double>::quiet_NaN(), ""},
    };
    for (const auto& [x, y, scale, name] : cases) {
        const int index = topControlAt({x, y}, scale, [](int) { return true; });
        EXPECT_EQ(index == kNoControl ? "" : controlRow(index).name, name) << x << ", " << y;
    }
}

} // namespace
} // namespace percussomatic
