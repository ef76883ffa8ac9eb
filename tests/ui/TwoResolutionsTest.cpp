// A screen that has another resolution down than across, which Wine never has. A process asks for each of them once: no
// other test of this program may ask for a size.

#include "tests/support/ImportPatch.h"
#include "tests/support/Layouts.h"
#include "tests/support/LiveObjects.h"
#include "ui/Fonts.h"
#include "ui/Scaling.h"
#include "ui/WindowLayout.h"

#include <gtest/gtest.h>

TEST(ScreenWithTwoResolutions, ScalesTheLayoutByTheOneAcrossAndTheFontByTheOneDown) {
    const ImportPatch<decltype(GetDeviceCaps)> ask("GetDeviceCaps", [](HDC, int capability) -> int {
        return capability == LOGPIXELSX ? 72 : capability == LOGPIXELSY ? 144 : 0;
    });
    const LiveDeviceContexts contexts;
    EXPECT_EQ(ScaleFactor(), 1);
    EXPECT_EQ(VerticalScaleFactor(), 2);
    EXPECT_EQ(LiveDeviceContexts::CountMade(), 2U);
    EXPECT_EQ(LiveDeviceContexts::Count(), 0U);
    EXPECT_EQ(Scale(30), 30);
    EXPECT_EQ(VerticalScale(30), 60);
    EXPECT_EQ(ClientArea(), Gdiplus::Rect(0, 0, 300, 150));
    EXPECT_EQ(PrimaryButtonArea(), Gdiplus::Rect(195, 125, 90, 20));
    StartGraphics();
    MakeFonts();
    CoUninitialize(); // StartGraphics initialises COM for the life of its process
    EXPECT_EQ(StatusFont().GetSize(), 18);
}
