// The question that the real executable asks on a machine with a 32-bit OneNote, and a person who answers it.

#include "tests/support/InstallerScreen.h"
#include "tests/support/LabBrowser.h"
#include "tests/support/LabOffice.h"
#include "tests/support/Machine.h"
#include "tests/support/User.h"
#include "tests/support/WaitUntil.h"
#include "tests/support/Watchdog.h"

#include <commctrl.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

const std::wstring DownloadLink = L"Download 32-bit Vellumkit";
const std::wstring ContinueLink = L"No I have 64-bit OneNote, continue 64-bit installation";
const std::wstring HelpLink = L"Show me how to find which version of OneNote I have";

const std::wstring HelpAddress = L"https://www.vellumkit.example/how-to/find-office-bitness";

/// A dialog's visible buttons with their captions, from top to bottom.
using Buttons = std::vector<std::pair<std::wstring, HWND>>;

Buttons ButtonsOf(HWND dialog) {
    Buttons buttons;
    const auto collect = [](HWND child, LPARAM collected) -> BOOL {
        std::array<wchar_t, 32> name{};
        GetClassNameW(child, name.data(), static_cast<int>(name.size()));
        if (std::wstring_view(name.data()) == L"Button" && IsWindowVisible(child))
            reinterpret_cast<Buttons*>(collected)->emplace_back(CaptionOf(child), child);
        return TRUE;
    };
    EnumChildWindows(dialog, collect, reinterpret_cast<LPARAM>(&buttons));
    std::ranges::sort(buttons, {}, [](const auto& button) { return User::MiddleOf(button.second).y; });
    return buttons;
}

/// The dialog that a front-end shows.
class PromptScreen {
public:
    /// Waits for the dialog and its command links, and brings it to the front, where it takes keys.
    explicit PromptScreen(const Program& frontEnd) {
        WaitUntil("the dialog of the front-end", [&] {
            window_ = FindWindowOf(frontEnd, L"#32770");
            if (!IsWindowVisible(window_))
                return false;
            buttons_ = ButtonsOf(window_);
            return buttons_.size() == 3 &&
                   std::ranges::none_of(buttons_, [](const auto& button) { return button.first.empty(); });
        });
        WaitUntil("the focus on the first command link", [this] {
            SetForegroundWindow(window_);
            return GetForegroundWindow() == window_ && FocusOf(window_) == buttons_.front().second;
        });
    }

    HWND Window() const { return window_; }
    const Buttons& CommandLinks() const { return buttons_; }

    /// Clicks on the command link, and waits until the dialog is gone.
    void Click(const std::wstring& caption) const {
        const auto button = std::ranges::find(buttons_, caption, [](const auto& item) { return item.first; });
        if (button == buttons_.end())
            throw std::runtime_error("the dialog lacks a command link");
        User::Click(button->second);
        AwaitEnd();
    }

    void AwaitEnd() const {
        WaitUntil("the end of the dialog", [this] { return !IsWindow(window_); });
    }

private:
    HWND window_ = nullptr;
    Buttons buttons_;
};

/// A machine with a 32-bit OneNote.
class BitnessPromptOnScreen : public WindowedMachine {
protected:
    /// The front-end has ended where it was asked: no pass, no window, nothing installed.
    void ExpectNothingBegun(const Program& frontEnd, DWORD exitCode = 0) const {
        EXPECT_EQ(frontEnd.ExitCode(), exitCode);
        ExpectReport(L"click-to-run-32-bit", L"", exitCode == 0);
        ExpectLog({});
        EXPECT_FALSE(std::filesystem::exists(Target()));
    }

    const std::wstring DownloadAddress =
        L"https://www.vellumkit.example/downloadFile&fv=" + Version() + L"&file=VellumkitInstaller.x86.exe";
    const LabOffice Office{L"click-to-run-32-bit"};
    const LabBrowser Browser{Temporary()};
};

/// What is called in the place of TaskDialogIndirect.
class FailedBitnessPromptOnScreen : public BitnessPromptOnScreen, public testing::WithParamInterface<const char*> {};

} // namespace

TEST_F(BitnessPromptOnScreen, OffersThreeCommandLinksUnderItsTitle) {
    ExpectVerdict(Verdict::Asked, L"question");
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    EXPECT_EQ(CaptionOf(prompt.Window()), L"Vellumkit Installer");
    std::vector<std::wstring> captions;
    for (const auto& [caption, button] : prompt.CommandLinks())
        captions.push_back(caption);
    EXPECT_EQ(captions, (std::vector{DownloadLink, ContinueLink, HelpLink}));
    EXPECT_EQ(GetWindow(prompt.Window(), GW_OWNER), nullptr);
    EXPECT_EQ(FindWindowOf(frontEnd, L"WC_VELLUMKIT_INSTALLER"), nullptr) << "the window comes after the answer";
    ExpectReport(L"click-to-run-32-bit", L"", false);
}

TEST_F(BitnessPromptOnScreen, OpensTheDownloadInTheBrowserAndEndsWithoutAWindow) {
    ExpectVerdict(Verdict::Asked, L"question");
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(DownloadLink);
    ExpectNothingBegun(frontEnd);
    Browser.ExpectOpened({DownloadAddress});
}

TEST_F(BitnessPromptOnScreen, TakesEnterForTheDownload) {
    ExpectVerdict(Verdict::Asked, L"question");
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    User::Press({VK_RETURN});
    ExpectNothingBegun(frontEnd);
    Browser.ExpectOpened({DownloadAddress});
}

TEST_F(BitnessPromptOnScreen, GoesOnWithTheInstallation) {
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(ContinueLink);
    ExpectInstalled(frontEnd);
    Browser.ExpectOpened({});
}

TEST_F(BitnessPromptOnScreen, ComesBackAfterTheHelpPageAsOftenAsItIsAskedFor) {
    Watchdog::Allow(180); // it waits for a dialog seven times
    const Program frontEnd = Start(L"");
    Entries opened;
    for (int time = 0; time < 3; ++time) {
        PromptScreen(frontEnd).Click(HelpLink);
        opened.push_back(HelpAddress);
        const PromptScreen again(frontEnd);
        Browser.ExpectOpened(opened);
    }
    PromptScreen(frontEnd).Click(ContinueLink);
    ExpectInstalled(frontEnd);
    Browser.ExpectOpened({HelpAddress, HelpAddress, HelpAddress});
}

TEST_F(BitnessPromptOnScreen, HasTheDownloadForItsDefaultAgainAfterTheHelpPage) {
    ExpectVerdict(Verdict::Asked, L"question");
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(HelpLink);
    const PromptScreen again(frontEnd);
    Browser.ExpectOpened({HelpAddress});
    User::Press({VK_RETURN});
    ExpectNothingBegun(frontEnd);
    Browser.ExpectOpened({HelpAddress, DownloadAddress});
}

TEST_F(BitnessPromptOnScreen, StaysWhenAUserWantsToCloseItWithoutAnAnswer) {
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    User::Press({VK_ESCAPE});
    User::Press({VK_MENU, VK_F4});
    // What comes behind these keys shows that the dialog was still there for it.
    User::Press({VK_TAB});
    User::Press({VK_TAB});
    User::Press({VK_SPACE});
    prompt.AwaitEnd();
    PromptScreen(frontEnd).Click(ContinueLink);
    ExpectInstalled(frontEnd);
    Browser.ExpectOpened({HelpAddress});
}

TEST_F(BitnessPromptOnScreen, GoesOnWhenItIsClosedByAnotherProgram) {
    const Program frontEnd = Start(L"");
    const PromptScreen prompt(frontEnd);
    PostMessageW(prompt.Window(), TDM_CLICK_BUTTON, IDCANCEL, 0);
    prompt.AwaitEnd();
    ExpectInstalled(frontEnd);
    Browser.ExpectOpened({});
}

TEST_F(BitnessPromptOnScreen, EndsAfterTheDownloadAlsoWhenThereIsNoBrowser) {
    ExpectVerdict(Verdict::Asked, L"question");
    LabBrowser::Break();
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(DownloadLink);
    ExpectNothingBegun(frontEnd);
}

TEST_F(BitnessPromptOnScreen, ComesBackAlsoWhenThereIsNoBrowserForTheHelpPage) {
    LabBrowser::Break();
    const Program frontEnd = Start(L"");
    PromptScreen(frontEnd).Click(HelpLink);
    PromptScreen(frontEnd).Click(ContinueLink);
    ExpectInstalled(frontEnd);
}

TEST_P(FailedBitnessPromptOnScreen, EndsTheProcessAtOnce) {
    // DPA_LoadStream answers the null stream with E_INVALIDARG; the other is in no library.
    const std::filesystem::path program = CopyFrontEndThatCalls(GetParam(), "TaskDialogIndirect");
    const Program frontEnd(program, L"", Temporary());
    ExpectNothingBegun(frontEnd, 0x40000015); // STATUS_FATAL_APP_EXIT
    EXPECT_EQ(Program(program, L"/config x", Temporary()).ExitCode(), 0U) << "unattended nobody is asked";
}

INSTANTIATE_TEST_SUITE_P(, FailedBitnessPromptOnScreen, testing::Values("DPA_LoadStream", "NoTaskDialog"),
                         [](const auto& item) { return item.param; });
