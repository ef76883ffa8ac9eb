// The window of the real executable, measured from outside and on the screen, at every resolution.

#include "tests/support/InstallerScreen.h"
#include "tests/support/Layouts.h"
#include "tests/support/Machine.h"
#include "tests/support/User.h"

namespace {

class WindowOnScreen : public WindowedMachine {
protected:
    static Gdiplus::Rect ClientAreaOf(HWND window) {
        RECT client{};
        GetClientRect(window, &client);
        return Area(client);
    }

    const Layout& layout_ = LayoutHere();
};

/// On a machine without the font of the window and without one that stands in for it. Where Wine finds the fonts that
/// it brings, GDI+ has a generic family all the same.
using WindowWithoutFonts = WindowOnScreen;

/// At 96 DPI.
using WindowWithoutResolution = WindowOnScreen;

} // namespace

TEST_F(WindowOnScreen, HasTheSizesOfItsLayout) {
    ExpectVerdict(Verdict::Unfinished);
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    EXPECT_EQ(ClientAreaOf(screen.Window()), layout_.client);
    EXPECT_EQ(AreaWithin(screen.Window(), screen.Primary()), layout_.primary);
    EXPECT_EQ(AreaWithin(screen.Window(), screen.Secondary()), layout_.secondary);
}

TEST_F(WindowOnScreen, StandsInTheMiddleUnderItsTitle) {
    ExpectVerdict(Verdict::Unfinished);
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    EXPECT_EQ(CaptionOf(screen.Window()), L"Vellumkit");
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
    screen.AwaitFocus(screen.Secondary());
    const Picture seen = User::LookAt(screen.Window());
    const Gdiplus::Rect text = layout_.text;

    const Gdiplus::Rect logo = Drawn(seen, {0, 0, text.X, layout_.band.Y});
    const int margin = layout_.logo.Width / 8; // which the image has
    EXPECT_NEAR(logo.X, layout_.logo.X, margin);
    EXPECT_NEAR(logo.Y, layout_.logo.Y, margin);
    EXPECT_NEAR(logo.GetRight(), layout_.logo.GetRight(), margin);
    EXPECT_NEAR(logo.GetBottom(), layout_.logo.GetBottom(), margin);

    EXPECT_FALSE(Drawn(seen, text).IsEmptyArea());
    EXPECT_TRUE(IsFilled(seen, {text.X, text.GetBottom(), text.Width, layout_.band.Y - text.GetBottom()}, White));

    // The theme leaves the corner pixels of a button free.
    const Gdiplus::Rect buttons = Drawn(seen, layout_.band, LightGrey);
    EXPECT_NEAR(buttons.X, layout_.secondary.X, 1);
    EXPECT_NEAR(buttons.GetRight(), layout_.primary.GetRight(), 1);
    EXPECT_NEAR(buttons.Y, layout_.primary.Y, 1);
    EXPECT_NEAR(buttons.GetBottom(), layout_.primary.GetBottom(), 1);
    const Gdiplus::Rect between(layout_.secondary.GetRight(), layout_.band.Y,
                                layout_.primary.X - layout_.secondary.GetRight(), layout_.band.Height);
    EXPECT_TRUE(IsFilled(seen, between, LightGrey));
}

TEST_F(WindowOnScreen, BelongsToTheExecutable) {
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Completed);
    for (const HWND window : {screen.Window(), screen.Primary(), screen.Secondary()})
        EXPECT_NE(GetWindowLongPtrW(window, GWLP_HINSTANCE), 0);
}

// AbortDoc has nothing to abort there, and fails: its answer is not positive.
TEST_F(WindowWithoutResolution, HasTheSizesOf96Dpi) {
    ExpectVerdict(Verdict::Unfinished);
    const Program program(CopyFrontEndThatCalls("AbortDoc", "GetDeviceCaps"), L"", Temporary());
    const InstallerScreen screen(program);
    EXPECT_EQ(ClientAreaOf(screen.Window()), Gdiplus::Rect(0, 0, 400, 200));
    EXPECT_EQ(AreaWithin(screen.Window(), screen.Primary()), Gdiplus::Rect(260, 167, 120, 26));
}

TEST_F(WindowWithoutFonts, ShowsItsTextInTheGenericFamilyOrElseEverythingButText) {
    ASSERT_FALSE(Gdiplus::FontFamily(L"Segoe UI").IsAvailable());
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Completed);
    const Picture seen = User::LookAt(screen.Window());
    EXPECT_FALSE(Drawn(seen, layout_.logo).IsEmptyArea());
    EXPECT_EQ(IsFilled(seen, layout_.text, White), Gdiplus::FontFamily::GenericSansSerif() == nullptr);
    EXPECT_TRUE(IsFilled(seen, {0, layout_.band.Y, layout_.secondary.X, layout_.band.Height}, LightGrey));
    EXPECT_EQ(CaptionOf(screen.Primary()), L"&Close");
    screen.ClickCloseBox();
    EXPECT_EQ(program.ExitCode(), 0U);
}
