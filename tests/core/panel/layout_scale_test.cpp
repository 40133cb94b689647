// SPDX-License-Identifier: MIT
#include "panel/layout_scale.h"

#include "support/own_folder.h"

#include <gtest/gtest.h>

#include <utility>

namespace percussomatic {
namespace {

TEST(LayoutScale, IsReadFromTheBeginningOfTheFile) {
    const OwnFolder folder;
    EXPECT_EQ(readLayoutScale("scale.txt"), 1.0) << "no file";
    const std::pair<const char*, double> cases[] = {
        {"0.850", 0.85}, {"2", 1.0},        {"0.24", 0.25},        {"-3", 0.25}, {"abc", 1.0},
        {"", 1.0},       {"  0.5xyz", 0.5}, {"\n\t5e-1 0.3", 0.5}, {"nan", 1.0}, {"0.6\r\n", 0.6}};
    for (const auto& [text, scale] : cases) {
        put("scale.txt", text);
        EXPECT_EQ(readLayoutScale("scale.txt"), scale) << '"' << text << '"';
    }
    writeLayoutScale("scale.txt", 0.85 + 1e-9);
    EXPECT_EQ(contents("scale.txt"), "0.850");
    writeLayoutScale("no such folder/scale.txt", 0.5); // no-op
}

TEST(LayoutScale, StepsAreClamped) {
    EXPECT_EQ(steppedLayoutScale(0.5, kLayoutScaleStep), 0.55);
    EXPECT_EQ(steppedLayoutScale(0.98, kLayoutScaleStep), 1.0);
    EXPECT_EQ(steppedLayoutScale(0.26, -kLayoutScaleStep), 0.25);
}

TEST(LayoutScale, WindowFitsTheScreenWithItsMargin) {
    EXPECT_EQ(initialWindowSize(1920, 1080, 1.0), (Size{1618, 1040})) << "limited by height";
    EXPECT_EQ(initialWindowSize(1920, 1080, 0.85), (Size{1376, 884}));
    EXPECT_EQ(initialWindowSize(1080, 1920, 1.0), (Size{1040, 668})) << "limited by width";
    EXPECT_EQ(initialWindowSize(20000, 20000, 1.0), (Size{8019, 5153})) << "size of the artwork";
    EXPECT_EQ(initialWindowSize(100, 100, 1.0), (Size{320, 206}));
    EXPECT_EQ(initialWindowSize(100, 100, 0.25), (Size{120, 90}));
}

} // namespace
} // namespace percussomatic
