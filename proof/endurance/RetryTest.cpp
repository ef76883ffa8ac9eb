#include "proof/Extent.h"
#include "proof/endurance/Resources.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/Machine.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/Watchdog.h"

#include <algorithm>
#include <iostream>

namespace {

class Retries : public WindowedMachine {};

void Retry(const InstallerScreen& screen, int times) {
    for (int pass = 0; pass < times; ++pass) {
        Watchdog::Allow(60);
        SendMessageW(screen.Primary(), BM_CLICK, 0, 0); // returns when the button is gone
        WaitUntil("the end of a pass", [&screen] { return IsWindowVisible(screen.Primary()) != FALSE; });
    }
}

} // namespace

TEST_F(Retries, KeepAHandleOfTheElevatedInstallerAndATextEach) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    Configuration(L"1603");
    // A pass gives the elevated installer a second to come up. A name as short as that of Sleep has nothing but Beep,
    // which does nothing for a program without a console.
    const Program frontEnd(CopyFrontEndThatCalls("Beep", "Sleep"), L"", Temporary());
    const InstallerScreen screen(frontEnd);
    screen.AwaitFailure(SystemErrorText(1603));

    const int warmUp = 20;
    const int passes = Extent{.sample = 30, .whole = 1000}.Count();
    Retry(screen, warmUp);
    const Resources before = ResourcesOf(frontEnd.Handle());
    Retry(screen, passes);
    const Resources after = ResourcesOf(frontEnd.Handle());
    std::cout << "Before: " << before << "\nAfter " << passes << " passes: " << after << std::endl;
    constexpr std::size_t TextOfAPass = 512; // the error's text, and what the heap needs to keep it
    const auto count = static_cast<std::size_t>(passes);
    ExpectGrowth(before, after, count, count * TextOfAPass);

    screen.AwaitFailure(SystemErrorText(1603));
    screen.ClickCloseBox();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    Watchdog::Allow(60 + static_cast<unsigned>(passes)); // for the log of all of them
    EXPECT_EQ(std::ranges::count(Logged(), L"ERROR: Installer reported failure: 1603"), 1 + warmUp + passes);
}
