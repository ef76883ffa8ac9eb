#include "ui/Scaling.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/Layouts.h"

#include <gtest/gtest.h>

TEST(Scaling, IsByPixelsPerPoint) {
    const float factor = static_cast<float>(LayoutHere().pixelsPerInch) / 72.0F;
    EXPECT_EQ(ScaleFactor(), factor);
    EXPECT_EQ(VerticalScaleFactor(), factor);
}

TEST(Scaling, RoundsHalfAPixelUp) {
    const float half = 0.5F / ScaleFactor();
    EXPECT_EQ(Scale(3.0F * half), 2);
    EXPECT_EQ(Scale(2.9F * half), 1);
    EXPECT_EQ(VerticalScale(3.0F * half), 2);
    EXPECT_EQ(VerticalScale(2.9F * half), 1);
    EXPECT_EQ(Scale(0), 0);
}

TEST(Scaling, AsksForTheResolutionOnce) {
    ScaleFactor();
    VerticalScaleFactor();
    const ImportPatch<decltype(GetDeviceCaps)> ask("GetDeviceCaps", [](HDC, int) -> int { return 1000; });
    EXPECT_LT(ScaleFactor(), 10);
    EXPECT_LT(VerticalScaleFactor(), 10);
}
