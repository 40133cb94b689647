#include "audio/plate_reverb.h"

#include <gtest/gtest.h>

#include <vector>

namespace lumivarda::dsp {
namespace {

template <typename Lines>
std::vector<std::size_t> lengthsOf(const Lines& lines) {
    std::vector<std::size_t> lengths;
    lengths.reserve(lines.size());
    for (const auto& line : lines) {
        lengths.push_back(line.buffer.size());
    }
    return lengths;
}

Plate70Reverb preparedAt(double sampleRateHz) {
    Plate70Reverb reverb;
    reverb.prepare(sampleRateHz);
    return reverb;
}

TEST(Plate70Reverb, ScalesItsLinesToTheRate) {
    using Lengths = std::vector<std::size_t>;
    const Plate70Reverb reverb = preparedAt(48000.0);
    EXPECT_EQ(lengthsOf(reverb.combs[0]),
              (Lengths{1214, 1293, 1389, 1475, 1547, 1622, 1694, 1760}));
    EXPECT_EQ(lengthsOf(reverb.combs[1]),
              (Lengths{1239, 1318, 1414, 1500, 1572, 1647, 1719, 1785}));
    EXPECT_EQ(lengthsOf(reverb.allpasses[0]), (Lengths{605, 480, 371, 244}));
    EXPECT_EQ(lengthsOf(reverb.allpasses[1]), (Lengths{630, 505, 396, 269}));
    EXPECT_EQ(reverb.preDelayLeft.size(), 10080U);
    EXPECT_EQ(reverb.preDelayRight.size(), 10080U);

    const Plate70Reverb smallest = preparedAt(-48000.0);
    EXPECT_EQ(smallest.sampleRate, 1.0);
    EXPECT_EQ(lengthsOf(smallest.combs[1]), Lengths(8, 1));
    EXPECT_EQ(lengthsOf(smallest.allpasses[1]), Lengths(4, 1));
    EXPECT_EQ(smallest.preDelayLeft.size(), 8U);
}

TEST(Plate70Reverb, PreDelayIsReadBeforeItIsWritten) {
    const struct {
        float preDelayMs;
        int frames;
    } cases[] = {
        {0.0f, 10080},  {-5.0f, 10080},   {0.03f, 1},          {10.0f, 480},
        {200.0f, 9600}, {1000.0f, 10079}, {28.0833302f, 1348}, // 1347 when the product is taken in
                                                               // another order
    };
    for (const auto& [preDelayMs, frames] : cases) {
        SCOPED_TRACE(preDelayMs);
        Plate70Reverb reverb = preparedAt(48000.0);
        reverb.preDelayMs = preDelayMs;
        reverb.process(1.0f, 0.0f);
        int frame = 1;
        while (frame < 20000 && reverb.process(0.0f, 0.0f).left == 0.0f) {
            ++frame;
        }
        EXPECT_EQ(frame, frames + 1214) << "the shortest comb answers first";
    }
}

} // namespace
} // namespace lumivarda::dsp
