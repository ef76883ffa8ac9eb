#include "proof/Extent.h"
#include "proof/endurance/Resources.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/Machine.h"
#include "tests/support/Watchdog.h"

#include <iostream>

namespace {

class Paintings : public WindowedMachine {};

void Paint(HWND window, int times) {
    for (int painting = 0; painting < times; ++painting) {
        if (painting % 100 == 0)
            Watchdog::Allow(60);
        ASSERT_TRUE(RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW)); // returns when it is done
    }
}

} // namespace

TEST_F(Paintings, LeaveNothing) {
    Configuration(L"1603");
    const Program frontEnd = Start(L"");
    const InstallerScreen screen(frontEnd);
    screen.AwaitFailure(SystemErrorText(1603));

    Paint(screen.Window(), 200);
    const Resources before = ResourcesOf(frontEnd.Handle());
    const int times = Extent{.sample = 1'000, .whole = 100'000}.Count();
    Paint(screen.Window(), times);
    const Resources after = ResourcesOf(frontEnd.Handle());
    std::cout << "Before: " << before << "\nAfter " << times << " paintings: " << after << std::endl;
    ExpectGrowth(before, after, 0, 0);
    screen.AwaitFailure(SystemErrorText(1603));
    screen.ClickCloseBox();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
}
