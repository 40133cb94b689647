#include "ui/assets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace percussomatic {
namespace {

std::string upperCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    return text;
}

TEST(Assets, TableIsSortedByUpperCasedNameAndLookUpsAreExact) {
    EXPECT_EQ(assetTable().size(), 29u);
    std::string last;
    for (const AssetRow& row : assetTable()) {
        SCOPED_TRACE(row.name);
        EXPECT_LT(last, upperCased(row.name));
        last = upperCased(row.name);
        EXPECT_GT(row.end, row.begin);
        EXPECT_EQ(findAsset(row.name).bytes, row.begin);
        EXPECT_EQ(findAsset(row.name).span().end().base(), row.end);
    }
    for (const char* name : {"BIN_onPNG.png", "BIN_on.PNG", "mobile.PN", "mobile.PNG ", ""}) {
        EXPECT_EQ(findAsset(name).bytes, nullptr) << name;
        EXPECT_EQ(findAsset(name).size, 0u) << name;
    }
}

} // namespace
} // namespace percussomatic
