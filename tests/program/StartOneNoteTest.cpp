// The button Start OneNote of an installation that has completed, and OneNote in another process.

#include "install/ScreenState.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Machine.h"
#include "tests/support/User.h"
#include "tests/support/WaitUntil.h"

#include <algorithm>
#include <optional>

namespace {

/// A window of another program at the bottom, which comes to the front by itself once the installer is gone, unless
/// somebody brings another one there.
class AnotherWindow {
public:
    AnotherWindow() { SetWindowPos(program_.Window(), HWND_BOTTOM, 0, 300, 200, 150, SWP_SHOWWINDOW | SWP_NOACTIVATE); }

private:
    TargetProgram program_;
};

class StartOfOneNote : public WindowedMachine {
protected:
    /// An installation has completed, while no target program ran.
    void SetUp() override {
        WindowedMachine::SetUp();
        program_.emplace(Start(L""));
        screen_.emplace(*program_);
        screen_->Await(ScreenStatus::Completed);
    }

    /// Presses the button, and waits for the program's end.
    void StartOneNote() const {
        screen_->Activate();
        User::Click(screen_->Secondary());
        EXPECT_EQ(program_->ExitCode(), 0U);
    }

    /// What the log says of the start of OneNote.
    Entries LoggedStart() const {
        const Entries log = Logged();
        const auto first = std::ranges::find(log, L"Starting OneNote");
        const auto last = std::find(first, log.end(), L"Exit signalled, returning from background process");
        return {first, last};
    }

    static Entries LogOfFailure(const std::wstring& errorText) {
        return {L"Starting OneNote", L"ERROR: Failed to start OneNote: " + errorText};
    }

    LabOneNote OneNote{Temporary()};

private:
    std::optional<Program> program_;
    std::optional<InstallerScreen> screen_;
};

const Entries LogOfSuccess{L"Starting OneNote", L"Started OneNote"};

// What OneNote is asked, up to a call.
const Entries UpToCreation{L"CreateInstance"};
const Entries UpToWindows = Joined({UpToCreation, {L"Windows"}});
const Entries UpToCount = Joined({UpToWindows, {L"Count"}});
const Entries UpToNavigation = Joined({UpToCount, {LR"(NavigateTo("", "", -1))"}}); // VARIANT_TRUE
const Entries UpToSecondWindows = Joined({UpToNavigation, {L"Windows"}});
const Entries UpToCurrentWindow = Joined({UpToSecondWindows, {L"CurrentWindow"}});
const Entries UpToWindowHandle = Joined({UpToCurrentWindow, {L"WindowHandle"}});

const Entries StartedByCom{L"Started by COM"};
const Entries Released{L"No references"};
const Entries ReleasedAndEnded{L"No references", L"Ended"};

/// A call of a OneNote that was not running, which fails or gives null.
struct Step {
    const char* name;
    LabOneNote::Call call;
    Entries asked;
    /// It ends, since it has no window then, or runs on.
    Entries then;
};

class StartOfOneNoteCall : public StartOfOneNote, public testing::WithParamInterface<Step> {};
class StartOfOneNoteNull : public StartOfOneNote, public testing::WithParamInterface<Step> {};

const auto NameOfStep = [](const auto& item) { return item.param.name; };

void AwaitFront(HWND window) {
    WaitUntil("the window in front", [window] { return GetForegroundWindow() == window; });
}

} // namespace

TEST_F(StartOfOneNote, OpensAWindowInFrontWhenItIsNotRunning) {
    OneNote.Register();
    const AnotherWindow other;
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfSuccess);
    OneNote.ExpectRecord(Joined({StartedByCom, UpToWindowHandle, Released}));
    ASSERT_EQ(LabOneNote::Windows().size(), 1U);
    AwaitFront(LabOneNote::Windows()[0]);
}

TEST_F(StartOfOneNote, BringsTheCurrentWindowToTheFrontWhenItIsRunning) {
    OneNote.Set(L"Windows=3");
    OneNote.Register();
    OneNote.Start();
    const AnotherWindow other;
    HWND current = FindWindowW(nullptr, L"OneNote 2");
    SetWindowPos(current, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfSuccess);
    OneNote.ExpectRecord((Entries{L"Started", L"CreateInstance", L"Windows", L"Count", L"Windows", L"CurrentWindow",
                                  L"WindowHandle", L"No references"}));
    EXPECT_EQ(LabOneNote::Windows().size(), 3U);
    AwaitFront(current);
}

TEST_F(StartOfOneNote, WaitsForAnAnswerThatTakesLong) {
    OneNote.Set(L"Call=NavigateTo\nTrouble=wait\nMilliseconds=3000");
    OneNote.Register();
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfSuccess);
    OneNote.ExpectRecord(Joined({StartedByCom, UpToWindowHandle, Released}));
}

TEST_F(StartOfOneNote, FailsWhenItIsNotRegistered) {
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfFailure(SystemErrorText(REGDB_E_CLASSNOTREG)));
}

TEST_F(StartOfOneNote, FailsWhenOneNoteDiesInACall) {
    OneNote.Set(L"Call=CurrentWindow\nTrouble=end");
    OneNote.Register();
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfFailure(SystemErrorText(HRESULT_FROM_WIN32(RPC_S_CALL_FAILED))));
    OneNote.ExpectRecord(Joined({StartedByCom, UpToCurrentWindow}));
}

TEST_F(StartOfOneNote, FailsWhenTheApplicationCannotBeCreated) {
    OneNote.Set(LabOneNote::Failing({L"CreateInstance"}, CO_E_SERVER_EXEC_FAILURE));
    OneNote.Register();
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfFailure(SystemErrorText(CO_E_SERVER_EXEC_FAILURE)));
    OneNote.ExpectRecord(Joined({StartedByCom, UpToCreation, {L"Ended"}}));
}

INSTANTIATE_TEST_SUITE_P(, StartOfOneNoteCall,
                         testing::Values(Step{"Windows", {L"Windows"}, UpToWindows, ReleasedAndEnded},
                                         Step{"Count", {L"Count"}, UpToCount, ReleasedAndEnded},
                                         Step{"NavigateTo", {L"NavigateTo"}, UpToNavigation, ReleasedAndEnded},
                                         Step{"WindowsAgain", {L"Windows", 2}, UpToSecondWindows, Released},
                                         Step{"CurrentWindow", {L"CurrentWindow"}, UpToCurrentWindow, Released},
                                         Step{"WindowHandle", {L"WindowHandle"}, UpToWindowHandle, Released}),
                         NameOfStep);

TEST_P(StartOfOneNoteCall, FailsWithTheSystemsMessage) {
    OneNote.Set(LabOneNote::Failing(GetParam().call, E_ACCESSDENIED));
    OneNote.Register();
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfFailure(SystemErrorText(E_ACCESSDENIED)));
    OneNote.ExpectRecord(Joined({StartedByCom, GetParam().asked, GetParam().then}));
}

/// Wine does not carry error information from one process to another, so OneNote's objects are in the front-end's.
TEST_P(StartOfOneNoteCall, FailsWithItsDescription) {
    OneNote.Set(LabOneNote::Failing(GetParam().call, E_ACCESSDENIED, L"A dialog is open."));
    OneNote.RegisterInProcess();
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfFailure(L"A dialog is open. (0x80070005)"));
    OneNote.ExpectRecord(Joined({GetParam().asked, Released}));
}

INSTANTIATE_TEST_SUITE_P(, StartOfOneNoteNull,
                         testing::Values(Step{"Collection", {L"Windows"}, UpToWindows, ReleasedAndEnded},
                                         Step{"SecondCollection", {L"Windows", 2}, UpToSecondWindows, Released},
                                         Step{"CurrentWindow", {L"CurrentWindow"}, UpToCurrentWindow, Released},
                                         Step{"CurrentWindowAfterANavigationThatOpensNone",
                                              {L"NavigateTo"},
                                              UpToCurrentWindow,
                                              ReleasedAndEnded}),
                         NameOfStep);

TEST_P(StartOfOneNoteNull, FailsWithAPointerError) {
    OneNote.Set(LabOneNote::GivingNull(GetParam().call));
    OneNote.Register();
    StartOneNote();
    EXPECT_EQ(LoggedStart(), LogOfFailure(SystemErrorText(E_POINTER)));
    OneNote.ExpectRecord(Joined({StartedByCom, GetParam().asked, GetParam().then}));
}
