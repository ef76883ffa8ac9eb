// Installations with a window, by a person with keyboard and mouse.

#include "app/AbnormalEnd.h"
#include "install/ScreenState.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Layouts.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/User.h"
#include "tests/support/WaitUntil.h"

#include <algorithm>

namespace {

const Entries WaitForTheUser{L"Waiting for a signal"};
const Entries ExitOfTheWorker{L"Exit signalled, returning from background process"};

class WindowedInstallation : public WindowedMachine {
protected:
    /// What the payload shall do; an installation with a window has no configuration to hand on.
    void SetPayload(const std::wstring& exitCode, int milliseconds = 0) const { Configuration(exitCode, milliseconds); }

    static std::wstring ErrorFive() { return SystemErrorText(5); }

    /// A pass whose payload returned 5.
    Entries LogOfFailedPass(bool folderExists = false) const {
        return Joined({LogOfExtraction(folderExists),
                       {L"ERROR: Installer reported failure: 5", LogOfFailure(ErrorFive())},
                       WaitForTheUser});
    }

    /// A front-end whose first pass failed.
    struct Failed {
        Program program;
        InstallerScreen screen;
    };
    Failed StartAndFail() const {
        SetPayload(L"5");
        Program program = Start(L"");
        const InstallerScreen screen(program);
        screen.AwaitFailure(ErrorFive());
        return {std::move(program), screen};
    }

    /// A front-end that has installed.
    struct Completed {
        Program program;
        InstallerScreen screen;
    };
    Completed StartAndComplete() const {
        Program program = Start(L"");
        const InstallerScreen screen(program);
        screen.Await(ScreenStatus::Completed);
        screen.Activate();
        return {std::move(program), screen};
    }

    /// OneNote is not registered here.
    void ExpectStartOfOneNoteFailed() const {
        const Entries log = Logged();
        const auto start = std::ranges::find(log, L"Starting OneNote");
        ASSERT_NE(start, log.end());
        ASSERT_NE(start + 1, log.end());
        EXPECT_EQ(*(start + 1), L"ERROR: Failed to start OneNote: " + SystemErrorText(REGDB_E_CLASSNOTREG));
    }

    /// A pass that went through to its end, and then the end of the worker.
    void ExpectLogEndsWithAWholePass() const {
        const Entries end = Joined({{L"State: Complete"}, WaitForTheUser, ExitOfTheWorker});
        Entries log = Logged();
        ASSERT_GE(log.size(), end.size());
        log.erase(log.begin(), log.end() - static_cast<std::ptrdiff_t>(end.size()));
        EXPECT_EQ(log, end);
    }
};

struct FailingStart {
    const char* name;
    const char* function;
    /// Of the same library, and returns null for these arguments.
    const char* replacement;
};

class FailedStart : public WindowedInstallation, public testing::WithParamInterface<FailingStart> {};

} // namespace

// The four states

TEST_F(WindowedInstallation, ShowsCheckingWithoutButtonsWhileOneNoteRuns) {
    LabOneNote oneNote(Temporary());
    oneNote.Start();
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Checking);
    LabOneNote::Close();
    screen.Await(ScreenStatus::Completed);
}

TEST_F(WindowedInstallation, ShowsInstallingWithoutButtonsWhileThePayloadRuns) {
    SetPayload(L"0", 1500);
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Installing);
    screen.Await(ScreenStatus::Completed);
}

TEST_F(WindowedInstallation, ShowsFailedWithTheErrorAndRetryFocused) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const Failed failed = StartAndFail();
    failed.screen.AwaitFocus(failed.screen.Primary());
    EXPECT_EQ(CaptionOf(failed.screen.Primary()), L"&Retry >");
}

TEST_F(WindowedInstallation, ShowsCompletedWithStartOneNoteFocused) {
    const Completed completed = StartAndComplete();
    completed.screen.AwaitFocus(completed.screen.Secondary());
    EXPECT_EQ(CaptionOf(completed.screen.Primary()), L"&Close");
    EXPECT_EQ(CaptionOf(completed.screen.Secondary()), L"&Start OneNote");
}

TEST_F(WindowedInstallation, ShowsTheProgramsOwnTextForItsOwnErrorCode) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    SetPayload(L"-100");
    const Program program = Start(L"");
    InstallerScreen(program).AwaitFailure(L"Failed to read installation resource. (0xffffff9c)");
}

TEST_F(WindowedInstallation, HappensWithoutTheConfigOptionOrAPath) {
    for (const wchar_t* arguments : {L"/config", L"/config \"\"", L"/CONFIG x", L"/delay x"}) {
        const Program program = Start(arguments);
        const InstallerScreen screen(program);
        screen.Await(ScreenStatus::Completed);
        screen.ClickCloseBox();
        EXPECT_EQ(program.ExitCode(), 0U) << testing::PrintToString(std::wstring(arguments));
    }
}

TEST_F(WindowedInstallation, GoesOnWhenNothingCanBePainted) {
    // GetMenu answers null for a window without a menu.
    const Program program(CopyFrontEndThatCalls("GetMenu", "BeginPaint"), L"", Temporary());
    const InstallerScreen screen(program);
    WaitUntil("the end of a pass in a window that is not painted",
              [&screen] { return CaptionOf(screen.Primary()) == L"&Close"; });
    screen.ClickCloseBox();
    EXPECT_EQ(program.ExitCode(), 0U);
    ExpectLogEndsWithAWholePass();
}

// Starts that fail

TEST_P(FailedStart, EndsWithZeroAndInstallsNothing) {
    ExpectVerdict(Verdict::Unfinished, L"window");
    const std::filesystem::path program = CopyFrontEndThatCalls(GetParam().replacement, GetParam().function);
    EXPECT_EQ(Program(program, L"", Temporary()).ExitCode(), 0U);
    EXPECT_FALSE(std::filesystem::exists(Target()));
    ExpectReport(L"no-office", L"");
    ExpectLog({});
}

INSTANTIATE_TEST_SUITE_P(, FailedStart,
                         testing::Values(FailingStart{"WithoutAWindow", "CreateWindowExW", "DestroyMenu"},
                                         FailingStart{"WithoutEvents", "CreateEventW", "LocalFree"}),
                         [](const auto& item) { return item.param.name; });

// The ways to its end

TEST_F(WindowedInstallation, EndsWithZeroAndAWholeLogWhenClosed) {
    const Completed completed = StartAndComplete();
    User::Click(completed.screen.Primary());
    EXPECT_EQ(completed.program.ExitCode(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair(), WaitForTheUser, ExitOfTheWorker}));
    EXPECT_EQ(PayloadCommandLine(), L'"' + Target() + L"\" " + Temporary() + L' ');
    EXPECT_EQ(GetValue(InternetSettings, L"SecureProtocols"), Dword(0xA80));
}

TEST_F(WindowedInstallation, InstallsInASecondPassWhenTheUserRetriesWithoutTheCause) {
    const Failed failed = StartAndFail();
    SetPayload(L"0", 500);
    User::Click(failed.screen.Primary());
    failed.screen.Await(ScreenStatus::Installing);
    failed.screen.Await(ScreenStatus::Completed);
    failed.screen.Activate();
    User::Click(failed.screen.Primary());
    EXPECT_EQ(failed.program.ExitCode(), 0U);
    Entries secondSearch = LogOfSearch();
    secondSearch.erase(secondSearch.begin()); // the worker began once
    ExpectLog(Joined({LogOfSearch(), LogOfFailedPass(), secondSearch, LogOfExtraction(true), LogOfRepair(),
                      WaitForTheUser, ExitOfTheWorker}));
}

TEST_F(WindowedInstallation, ShowsCheckingAfterRetryUntilThePassInstalls) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const Failed failed = StartAndFail();
    SetPayload(L"5", 1000);
    LabOneNote oneNote(Temporary());
    oneNote.Start();
    failed.screen.Activate();
    User::Click(failed.screen.Primary());
    failed.screen.Await(ScreenStatus::Checking);
    LabOneNote::Close();
    failed.screen.Await(ScreenStatus::Installing);
    failed.screen.AwaitFailure(ErrorFive());
}

// The close box

TEST_F(WindowedInstallation, IsFinishedWhenTheWindowIsClosedInChecking) {
    LabOneNote oneNote(Temporary());
    oneNote.Start();
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Checking);
    screen.ClickCloseBox();
    screen.AwaitEnd();
    EXPECT_TRUE(program.IsRunning());
    LabOneNote::Close();
    EXPECT_EQ(program.ExitCode(), 0U);
    ExpectLogEndsWithAWholePass();
}

TEST_F(WindowedInstallation, IsFinishedWhenTheWindowIsClosedWhileThePayloadRuns) {
    SetPayload(L"0", 3000);
    const Program program = Start(L"");
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Installing);
    screen.ClickCloseBox();
    screen.AwaitEnd();
    EXPECT_TRUE(program.IsRunning());
    EXPECT_EQ(program.ExitCode(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair(), WaitForTheUser, ExitOfTheWorker}));
}

TEST_F(WindowedInstallation, EndsWhenTheWindowIsClosedInFailed) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const Failed failed = StartAndFail();
    failed.screen.ClickCloseBox();
    EXPECT_EQ(failed.program.ExitCode(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfFailedPass(), ExitOfTheWorker}));
}

TEST_F(WindowedInstallation, EndsWhenTheWindowIsClosedInCompleted) {
    const Completed completed = StartAndComplete();
    completed.screen.ClickCloseBox();
    EXPECT_EQ(completed.program.ExitCode(), 0U);
    ExpectLog(Joined({LogOfSearch(), LogOfExtraction(), LogOfRepair(), WaitForTheUser, ExitOfTheWorker}));
}

// strlen in the place of _onexit keeps the destructors of static objects from running, the log's among them. What
// closes the file then, and here aborts instead, is the entry point.
TEST_F(WindowedInstallation, ClosesItsLogBeforeTheRuntimeEndsTheProcess) {
    const std::filesystem::path file = CopyFrontEndThatCalls("strlen", "_onexit");
    LetCall(file, "abort", "fclose");
    const Program program(file, L"", Temporary());
    const InstallerScreen screen(program);
    screen.Await(ScreenStatus::Completed);
    screen.ClickCloseBox();
    EXPECT_EQ(program.ExitCode(), AbnormalExitCode);
}

// Keyboard and mouse

TEST_F(WindowedInstallation, IsRetriedWithSpace) {
    const Failed failed = StartAndFail();
    failed.screen.AwaitFocus(failed.screen.Primary());
    SetPayload(L"0");
    User::Press({VK_SPACE});
    failed.screen.Await(ScreenStatus::Completed);
}

TEST_F(WindowedInstallation, StartsOneNoteWithSpace) {
    const Completed completed = StartAndComplete();
    completed.screen.AwaitFocus(completed.screen.Secondary());
    User::Press({VK_SPACE});
    EXPECT_EQ(completed.program.ExitCode(), 0U);
    ExpectStartOfOneNoteFailed();
}

TEST_F(WindowedInstallation, MovesTheFocusWithTabAndBackWithShift) {
    const Completed completed = StartAndComplete();
    const InstallerScreen& screen = completed.screen;
    screen.AwaitFocus(screen.Secondary());
    User::Press({VK_TAB});
    screen.AwaitFocus(screen.Primary());
    User::Press({VK_TAB});
    screen.AwaitFocus(screen.Secondary());
    User::Press({VK_SHIFT, VK_TAB});
    screen.AwaitFocus(screen.Primary());
    User::Press({VK_SHIFT, VK_TAB});
    screen.AwaitFocus(screen.Secondary());
    User::Press({VK_TAB});
    screen.AwaitFocus(screen.Primary());
    User::Press({VK_SPACE});
    EXPECT_EQ(completed.program.ExitCode(), 0U);
    EXPECT_EQ(std::ranges::count(Logged(), L"Starting OneNote"), 0);
}

TEST_F(WindowedInstallation, KeepsTheFocusOnTheOnlyButtonWithTab) {
    ExpectVerdict(Verdict::Failed, L"elevated-installer");
    const Failed failed = StartAndFail();
    failed.screen.AwaitFocus(failed.screen.Primary());
    User::Press({VK_TAB});
    Sleep(300);
    EXPECT_TRUE(failed.screen.HasFocus(failed.screen.Primary()));
}

TEST_F(WindowedInstallation, IsRetriedWithAltAndItsMnemonic) {
    const Failed failed = StartAndFail();
    failed.screen.Activate();
    SetPayload(L"0");
    User::Press({VK_MENU, 'R'});
    failed.screen.Await(ScreenStatus::Completed);
}

TEST_F(WindowedInstallation, IsClosedWithAltAndItsMnemonic) {
    const Completed completed = StartAndComplete();
    User::Press({VK_MENU, 'R'}); // of a caption that is no longer there
    User::Press({VK_TAB});
    completed.screen.AwaitFocus(completed.screen.Primary());
    User::Press({VK_MENU, 'C'});
    EXPECT_EQ(completed.program.ExitCode(), 0U);
    EXPECT_EQ(std::ranges::count(Logged(), L"Starting OneNote"), 0);
}

TEST_F(WindowedInstallation, StartsOneNoteWithAltAndItsMnemonic) {
    const Completed completed = StartAndComplete();
    User::Press({VK_MENU, 'S'});
    EXPECT_EQ(completed.program.ExitCode(), 0U);
    ExpectStartOfOneNoteFailed();
}

TEST_F(WindowedInstallation, IgnoresAClickThatIsReleasedOutsideTheButton) {
    const Completed completed = StartAndComplete();
    const InstallerScreen& screen = completed.screen;
    const POINT button = User::MiddleOf(screen.Primary());
    User::MouseDown(button);
    screen.AwaitFocus(screen.Primary());
    User::MouseUp({button.x, button.y - 60 * LayoutHere().pixelsPerInch / 96});
    Sleep(300);
    ASSERT_TRUE(screen.IsOpen());
    screen.Await(ScreenStatus::Completed);
    User::Click(screen.Primary());
    EXPECT_EQ(completed.program.ExitCode(), 0U);
}

TEST_F(WindowedInstallation, GivesTheFocusBackToItsButtonAfterAnotherWindowHadIt) {
    const Completed completed = StartAndComplete();
    const InstallerScreen& screen = completed.screen;
    screen.AwaitFocus(screen.Secondary());
    User::Press({VK_TAB});
    screen.AwaitFocus(screen.Primary());
    const TargetProgram other;
    SetWindowPos(other.Window(), HWND_TOP, 0, 0, 200, 150, SWP_SHOWWINDOW);
    User::Click(other.Window());
    screen.AwaitBackground();
    screen.ClickCaption();
    screen.AwaitFocus(screen.Primary());
}

// Two at once

TEST_F(WindowedInstallation, SucceedsInBothOfTwoCopiesStartedAtOnce) {
    const Program first = Start(L"");
    const Program second = Start(L"");
    const InstallerScreen screens[] = {InstallerScreen(first), InstallerScreen(second)};
    // They stand in the same place.
    SetWindowPos(screens[1].Window(), HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE);
    const User::ConfirmedBoxes boxes; // the shell's, for a payload that the other one is writing
    for (const InstallerScreen& screen : screens) {
        WaitUntil("the end of a pass in one of two copies",
                  [&screen] { return IsWindowVisible(screen.Primary()) && !CaptionOf(screen.Primary()).empty(); });
    }
    int retries = 0;
    for (const InstallerScreen& screen : screens) {
        if (CaptionOf(screen.Primary()) == L"&Retry >") { // the other one was writing or running the payload
            ++retries;
            User::Click(screen.Primary());
        }
    }
    for (const InstallerScreen& screen : screens)
        screen.Await(ScreenStatus::Completed);
    EXPECT_LE(retries, 1);
    User::Click(screens[0].Primary());
    EXPECT_EQ(first.ExitCode(), 0U);
    User::Click(screens[1].Primary());
    EXPECT_EQ(second.ExitCode(), 0U);
    std::filesystem::remove(Temporary() + L"Vellumkit_Install.log"); // both wrote there, over each other
}
