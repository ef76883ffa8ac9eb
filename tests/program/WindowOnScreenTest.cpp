// The window of the real executable, measured from outside and on the screen, at every resolution.

#include "app/ProcessState.h"
#include "core/LocalizedStrings.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/Layouts.h"
#include "tests/support/Machine.h"
#include "tests/support/User.h"
#include "ui/Logo.h"

#include <array>

namespace {

class WindowOnScreen : public Machine {
protected:
    void SetUp() override {
        Machine::SetUp();
        InstanceHandle = GetModuleHandleW(nullptr);
        LoadLocalizedStrings(L"en");
        LoadLogo();
    }

    static Gdiplus::Rect ClientAreaOf(HWND window) {
        RECT client{};
        GetClientRect(window, &client);
        return Area(client);
    }

    static Gdiplus::Rect AreaWithin(HWND window, HWND child) {
        RECT area{};
        GetWindowRect(child, &area);
        MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&area), 2);
        return Area(area);
    }

    const Layout& layout_ = LayoutHere();
};

/// On a machine where no font can be had.
using WindowWithoutFonts = WindowOnScreen;

} // namespace

TEST_F(WindowOnScreen, HasTheSizesOfItsLayout) {
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    EXPECT_EQ(ClientAreaOf(screen.Window()), layout_.client);
    EXPECT_EQ(AreaWithin(screen.Window(), screen.Primary()), layout_.primary);
    EXPECT_EQ(AreaWithin(screen.Window(), screen.Secondary()), layout_.secondary);
}

TEST_F(WindowOnScreen, StandsInTheMiddleUnderItsTitle) {
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    std::array<wchar_t, 64> title{};
    GetWindowTextW(screen.Window(), title.data(), static_cast<int>(title.size()));
    EXPECT_STREQ(title.data(), L"Vellumkit");
    RECT window{};
    RECT desktop{};
    GetWindowRect(screen.Window(), &window);
    GetWindowRect(GetDesktopWindow(), &desktop);
    EXPECT_NEAR(window.left + window.right, desktop.left + desktop.right, 1);
    EXPECT_NEAR(window.top + window.bottom, desktop.top + desktop.bottom, 1);
}

TEST_F(WindowOnScreen, ShowsLogoTextBandAndButtonsInTheirPlaces) {
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Completed);
    const Picture seen = User::LookAt(screen.Window());
    const Gdiplus::Rect text = layout_.text;

    EXPECT_FALSE(Drawn(seen, layout_.logo).IsEmptyArea());
    EXPECT_FALSE(Drawn(seen, text).IsEmptyArea());
    EXPECT_TRUE(IsFilled(seen, {text.X, text.GetBottom(), text.Width, layout_.band.Y - text.GetBottom()}, White));
    EXPECT_TRUE(IsFilled(seen, {0, layout_.band.Y, layout_.secondary.X, layout_.band.Height}, LightGrey));
    for (const Gdiplus::Rect& button : {layout_.primary, layout_.secondary})
        EXPECT_FALSE(Drawn(seen, button, LightGrey).IsEmptyArea());
}

TEST_F(WindowWithoutFonts, ShowsEverythingButText) {
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Completed);
    const Picture seen = User::LookAt(screen.Window());
    EXPECT_FALSE(Drawn(seen, layout_.logo).IsEmptyArea());
    EXPECT_TRUE(IsFilled(seen, layout_.text, White));
    EXPECT_TRUE(IsFilled(seen, {0, layout_.band.Y, layout_.secondary.X, layout_.band.Height}, LightGrey));
    EXPECT_EQ(CaptionOf(screen.Primary()), L"&Close");
    screen.ClickCloseBox();
    EXPECT_EQ(program.ExitCode(), 0U);
}
