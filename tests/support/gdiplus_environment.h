#pragma once

#include "ui/gdiplus_flat.h"

#include <gtest/gtest.h>

namespace percussomatic {

// GDI+ runs while any test runs.
class GdiplusEnvironment : public testing::Environment {
public:
    void SetUp() override {
        const Gdiplus::GdiplusStartupInput input;
        Gdiplus::GdiplusStartup(&token_, &input, nullptr);
    }
    void TearDown() override { Gdiplus::GdiplusShutdown(token_); }

private:
    ULONG_PTR token_ = 0;
};

inline testing::Environment* const gdiplusEnvironment =
    testing::AddGlobalTestEnvironment(new GdiplusEnvironment);

} // namespace percussomatic
