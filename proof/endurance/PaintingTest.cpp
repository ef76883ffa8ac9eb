#include "proof/Extent.h"
#include "proof/endurance/Resources.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/Machine.h"
#include "tests/support/User.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/Watchdog.h"

#include <iostream>

namespace {

class Paintings : public WindowedMachine {};

/// Fills the upper half of a window, where no buttons are, with what a painting removes.
void Blacken(HWND window) {
    RECT area{};
    GetClientRect(window, &area);
    area.bottom /= 2;
    HDC const context = GetDC(window);
    FillRect(context, &area, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    ReleaseDC(window, context);
    GdiFlush();
}

/// Sees now and then that the window is painted indeed.
void Paint(HWND window, int times) {
    const Picture painted = User::LookAt(window);
    for (int painting = 0; painting < times; ++painting) {
        const bool isWatched = painting % 100 == 0;
        if (isWatched) {
            Watchdog::Allow(60);
            Blacken(window);
            ASSERT_FALSE(User::LookAt(window) == painted);
        }
        ASSERT_TRUE(RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW)); // returns when it is done
        if (isWatched)
            WaitUntil("the painted window", [&] { return User::LookAt(window) == painted; });
    }
}

} // namespace

TEST_F(Paintings, LeaveNothing) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
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
