// The question that the real executable asks on a machine with a 32-bit OneNote, and a person who answers it.

#include "tests/support/InstallerScreen.h"
#include "tests/support/LabBrowser.h"
#include "tests/support/LabOffice.h"
#include "tests/support/Machine.h"
#include "tests/support/User.h"
#include "tests/support/Watchdog.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace {

const std::wstring DownloadLink = L"Download 32-bit Vellumkit";
const std::wstring ContinueLink = L"No I have 64-bit OneNote, continue 64-bit installation";
const std::wstring HelpLink = L"Show me how to find which version of OneNote I have";

const std::wstring DownloadAddress =
    L"https://www.vellumkit.example/downloadFile&fv=4.5.1&file=VellumkitInstaller.x86.exe";
const std::wstring HelpAddress = L"https://www.vellumkit.example/how-to/find-office-bitness";

/// The captions of a dialog's visible buttons, from top to bottom, and the buttons.
std::vector<std::pair<std::wstring, HWND>> ButtonsOf(HWND dialog) {
    std::vector<std::pair<std::wstring, HWND>> buttons;
    const auto collect = [](HWND child, LPARAM collected) -> BOOL {
        std::array<wchar_t, 32> name{};
        GetClassNameW(child, name.data(), static_cast<int>(name.size()));
        if (std::wstring_view(name.data()) == L"Button" && IsWindowVisible(child))
            reinterpret_cast<decltype(buttons)*>(collected)->emplace_back(CaptionOf(child), child);
        return TRUE;
    };
    EnumChildWindows(dialog, collect, reinterpret_cast<LPARAM>(&buttons));
    std::ranges::sort(buttons, {}, [](const auto& button) { return User::MiddleOf(button.second).y; });
    return buttons;
}

/// The dialog that a front-end shows.
class PromptScreen {
public:
    /// Waits for the dialog and its command links, and brings it to the front.
    explicit PromptScreen(const Program& frontEnd) : window_(AwaitWindow(frontEnd, L"#32770")) {
        const Watchdog::Waiting waiting("the command links of the front-end's dialog");
        while (!IsWindowVisible(window_) || ButtonsOf(window_).size() < 3)
            Sleep(20);
        SetForegroundWindow(window_);
        while (GetForegroundWindow() != window_)
            Sleep(20);
    }

    HWND Window() const { return window_; }

    /// Clicks on the command link, and waits until the dialog is gone.
    void Click(const std::wstring& caption) const {
        for (const auto& [text, button] : ButtonsOf(window_)) {
            if (text == caption)
                User::Click(button);
        }
        AwaitEnd();
    }

    void AwaitEnd() const {
        const Watchdog::Waiting waiting("the end of the front-end's dialog");
        while (IsWindow(window_))
            Sleep(20);
    }

private:
    HWND window_;
};

/// A machine with a 32-bit OneNote.
class BitnessPrompt : public WindowedMachine {
protected:
    /// The front-end has ended where it was asked: no pass, no window, nothing installed.
    void ExpectNothingBegun(const Program& frontEnd, DWORD exitCode) const {
        EXPECT_EQ(frontEnd.ExitCode(), exitCode);
        ExpectLog({});
        EXPECT_FALSE(std::filesystem::exists(Target()));
    }

    static void ExpectInstalled(const Program& frontEnd) {
        const InstallerScreen screen(frontEnd);
        screen.Await(ScreenStatus::Completed);
        screen.ClickCloseBox();
        EXPECT_EQ(frontEnd.ExitCode(), 0U);
    }

    const LabOffice Office{L"click-to-run-32-bit"};
    const LabBrowser Browser{Temporary()};
};

} // namespace

TEST_F(BitnessPrompt, OffersThreeCommandLinksUnderItsTitle) {
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    EXPECT_EQ(CaptionOf(prompt.Window()), L"Vellumkit Installer");
    std::vector<std::wstring> captions;
    for (const auto& [caption, button] : ButtonsOf(prompt.Window()))
        captions.push_back(caption);
    EXPECT_EQ(captions, (std::vector{DownloadLink, ContinueLink, HelpLink}));
    EXPECT_EQ(GetWindow(prompt.Window(), GW_OWNER), nullptr);
    EXPECT_EQ(FindWindowOf(frontEnd, L"WC_VELLUMKIT_INSTALLER"), nullptr) << "the window comes after the answer";
    ExpectLog({});
}

TEST_F(BitnessPrompt, OpensTheDownloadInTheBrowserAndEndsWithoutAWindow) {
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(DownloadLink);
    ExpectNothingBegun(frontEnd, 0);
    Browser.ExpectOpened({DownloadAddress});
}

TEST_F(BitnessPrompt, TakesEnterForTheDownload) {
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    User::Press({VK_RETURN});
    ExpectNothingBegun(frontEnd, 0);
    Browser.ExpectOpened({DownloadAddress});
}

TEST_F(BitnessPrompt, GoesOnWithTheInstallation) {
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(ContinueLink);
    ExpectInstalled(frontEnd);
    Browser.ExpectOpened({});
}

TEST_F(BitnessPrompt, ComesBackAfterTheHelpPageAsOftenAsItIsAskedFor) {
    const Program frontEnd = Start(L"");
    for (int time = 0; time < 3; ++time)
        PromptScreen(frontEnd).Click(HelpLink);
    Browser.ExpectOpened({HelpAddress, HelpAddress, HelpAddress});
    PromptScreen(frontEnd).Click(ContinueLink);
    ExpectInstalled(frontEnd);
    Browser.ExpectOpened({HelpAddress, HelpAddress, HelpAddress});
}

TEST_F(BitnessPrompt, HasTheDownloadForItsDefaultAgainAfterTheHelpPage) {
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(HelpLink);
    Browser.ExpectOpened({HelpAddress});
    const PromptScreen again(frontEnd);
    User::Press({VK_RETURN});
    ExpectNothingBegun(frontEnd, 0);
    Browser.ExpectOpened({HelpAddress, DownloadAddress});
}

TEST_F(BitnessPrompt, StaysWhenAUserWantsToCloseItWithoutAnAnswer) {
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    User::Press({VK_ESCAPE});
    User::Press({VK_MENU, VK_F4});
    Sleep(500);
    EXPECT_TRUE(IsWindow(prompt.Window()));
    prompt.Click(ContinueLink);
    ExpectInstalled(frontEnd);
}

TEST_F(BitnessPrompt, GoesOnWhenItIsClosedByAnotherProgram) {
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    PostMessageW(prompt.Window(), TDM_CLICK_BUTTON, IDCANCEL, 0);
    prompt.AwaitEnd();
    ExpectInstalled(frontEnd);
    Browser.ExpectOpened({});
}

TEST_F(BitnessPrompt, EndsAfterTheDownloadAlsoWhenThereIsNoBrowser) {
    LabBrowser::Break();
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(DownloadLink);
    ExpectNothingBegun(frontEnd, 0);
}

TEST_F(BitnessPrompt, ComesBackAlsoWhenThereIsNoBrowserForTheHelpPage) {
    LabBrowser::Break();
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(HelpLink);
    PromptScreen(frontEnd).Click(ContinueLink);
    ExpectInstalled(frontEnd);
}

TEST_F(BitnessPrompt, EndsTheProcessAtOnceWhenItCannotBeShown) {
    // DPA_LoadStream answers the null stream with E_INVALIDARG.
    const std::filesystem::path program = CopyFrontEndThatCalls("DPA_LoadStream", "TaskDialogIndirect");
    const Program frontEnd(program, L"", Temporary());
    ExpectNothingBegun(frontEnd, 0x40000015); // STATUS_FATAL_APP_EXIT
    EXPECT_EQ(Program(program, L"/config x", Temporary()).ExitCode(), 0U) << "unattended nobody is asked";
}
