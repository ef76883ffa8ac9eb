#include "ui/WindowLayout.h"

#include "tests/support/Layouts.h"

#include <gtest/gtest.h>

TEST(WindowLayout, RoundsEachTermOnItsOwn) {
    const Layout& layout = LayoutHere();
    EXPECT_EQ(ClientArea(), layout.client);
    EXPECT_EQ(LogoArea(), layout.logo);
    EXPECT_EQ(ButtonBand(), layout.band);
    EXPECT_EQ(StatusTextBox(), layout.text);
    EXPECT_EQ(PrimaryButtonArea(), layout.primary);
    EXPECT_EQ(SecondaryButtonArea(), layout.secondary);
}
