// Installations while OneNote or Datebookery runs, unattended but for one. The waits are the real ones: a test that
// needs a long one says so in its name.

#include "install/ScreenState.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/LabOneNote.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"
#include "tests/support/Watchdog.h"

#include <algorithm>
#include <chrono>
#include <regex>

namespace {

using std::chrono::seconds;

const std::wstring CannotClose = L"ERROR: Cannot close OneNote Windows: ";

class OneNoteShutdown : public WindowedMachine {
protected:
    void SetUp() override {
        WindowedMachine::SetUp();
        Watchdog::Allow(180); // a pass that waits in vain takes 55 seconds and more
    }

    /// Returns the log when it has an entry that begins so. An entry is on disk once the next one has begun.
    std::wstring AwaitEntry(const std::wstring& start) const {
        const Watchdog::Waiting waiting("an entry of the front-end's log");
        for (;; Sleep(20)) {
            std::wstring log = Utf16(ReadBytes(Temporary() + L"Vellumkit_Install.log"));
            if (log.find(L" - " + start) != std::wstring::npos)
                return log;
        }
    }

    /// Performs a pass that succeeds, and returns how long it took.
    std::chrono::milliseconds TimeToInstall(const std::wstring& options = L"") const {
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(Start(options + L"/config x").ExitCode(), 0U);
        return std::chrono::milliseconds(GetTickCount64() - start);
    }

    /// Compares the log with that of a pass that found this program and saw it end after `waits`, and of what came
    /// after the pass.
    void ExpectLogOfPass(const std::wstring& name, const Entries& waits, const Entries& then = {}) const {
        ExpectLog(Joined({{L"Begin processing", L"Begin processing", L"Checking if OneNote is running",
                           L"Found process '" + name + L"'", L"OneNote is still running. Waiting..."},
                          waits,
                          {L"State: Installing - OneNote is not running, continuing with install"},
                          LogOfExtraction(),
                          LogOfRepair(),
                          then}));
    }

    static std::wstring AfterWaiting(int length, const wchar_t* action) {
        return L"OneNote is still running after " + std::to_wstring(length) + L" seconds. Attempting to " + action;
    }

    /// A OneNote that is registered and runs.
    void RunOneNote(const std::wstring& settings = L"") {
        OneNote.Set(settings);
        OneNote.Register();
        OneNote.Start();
    }

    /// Installs while a OneNote runs that can't be asked to close its windows; `errorText` says why.
    void ExpectTermination(const std::wstring& errorText, const Entries& record) const {
        EXPECT_GE(TimeToInstall(), seconds(10));
        EXPECT_EQ(OneNote.Started().ExitCode(), 0U);
        ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows"), CannotClose + errorText,
                                         AfterWaiting(5, L"terminate process")});
        OneNote.ExpectRecord(record);
    }

    LabOneNote OneNote{Temporary()};
};

// What OneNote is asked, up to a call.
const Entries UpToWindows{L"CreateInstance", L"Windows"};
const Entries UpToCount = Joined({UpToWindows, {L"Count"}});
const Entries UpToItem = Joined({UpToCount, {L"Item(0)"}});
const Entries UpToSecondItem = Joined({UpToItem, {L"Item(1)"}});
const Entries UpToWindowHandle = Joined({UpToItem, {L"WindowHandle"}}); // of the only window

/// A call that fails or gives null, of a OneNote with two windows.
struct Step {
    const char* name;
    LabOneNote::Call call;
    Entries asked;
};

const std::wstring TwoWindows = L"\nWindows=2";

class OneNoteShutdownCall : public OneNoteShutdown, public testing::WithParamInterface<Step> {};
class OneNoteShutdownNull : public OneNoteShutdown, public testing::WithParamInterface<Step> {};

const auto NameOfStep = [](const auto& item) { return item.param.name; };

/// A part of OneNote's registration that is missing. With which error a call fails then is the system's affair.
struct Damage {
    const char* name;
    std::vector<const wchar_t*> missingKeys;
    Entries record;
};

const Entries StartedInVain{L"Started by COM", L"CreateInstance", L"No references", L"Ended"};

/// The errors of a call to a OneNote that turns calls away while it is busy.
struct Refusal {
    const char* name;
    HRESULT error;
};

class OneNoteShutdownBusy : public OneNoteShutdown, public testing::WithParamInterface<Refusal> {};

class OneNoteShutdownDamage : public OneNoteShutdown, public testing::WithParamInterface<Damage> {};

} // namespace

TEST_F(OneNoteShutdown, AsksNothingWhenOneNoteEndsByItself) {
    RunOneNote();
    const Program frontEnd = Start(L"/delay /config x");
    AwaitEntry(L"Found process 'onenote.exe'");
    EXPECT_TRUE(frontEnd.IsRunning());
    LabOneNote::Close();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLogOfPass(L"onenote.exe", {});
    OneNote.ExpectRecord((Entries{L"Started", L"Ended"}));
}

TEST_F(OneNoteShutdown, WaitsForDatebookeryToo) {
    const TargetProgram datebookery;
    const Program frontEnd = Start(L"/delay /config x");
    AwaitEntry(L"Found process 'datebk.exe'");
    datebookery.TellToEnd();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLogOfPass(L"datebk.exe", {});
}

TEST_F(OneNoteShutdown, WaitsForOnlyOneOfTwo) {
    OneNote.Start();
    const TargetProgram datebookery;
    const Program frontEnd = Start(L"/delay /config x");
    const bool foundOneNote = AwaitEntry(L"Found process").find(L"'onenote.exe'") != std::wstring::npos;
    if (foundOneNote)
        LabOneNote::Close();
    else
        datebookery.TellToEnd();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLogOfPass(foundOneNote ? L"onenote.exe" : L"datebk.exe", {});
    EXPECT_TRUE(foundOneNote ? datebookery.IsRunning() : OneNote.Started().IsRunning());
}

// OneNote is asked to close its windows

TEST_F(OneNoteShutdown, RealWaitEndsWithoutATerminationWhenThreeWindowsClose) {
    RunOneNote(L"Windows=3");
    TimeToInstall();
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows")});
    OneNote.ExpectRecord(Joined(
        {{L"Started"},
         UpToItem,
         {L"Item(1)", L"Item(2)", L"WindowHandle", L"WindowHandle", L"WindowHandle", L"No references", L"Ended"}}));
}

TEST_F(OneNoteShutdown, RealWaitOfAnInstallationWithAWindowEndsWhenTwoWindowsClose) {
    RunOneNote(L"Windows=2");
    const Program frontEnd = Start(L"");
    const InstallerScreen screen(frontEnd);
    screen.Await(ScreenStatus::Completed);
    screen.ClickCloseBox();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows")},
                    {L"Waiting for a signal", L"Exit signalled, returning from background process"});
    OneNote.ExpectRecord(
        Joined({{L"Started"}, UpToSecondItem, {L"WindowHandle", L"WindowHandle", L"No references", L"Ended"}}));
}

TEST_F(OneNoteShutdown, RealWaitEndsWhenTheFramesOfEmbeddedWindowsClose) {
    RunOneNote(L"Windows=2\nFramed=1");
    TimeToInstall();
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows")});
    OneNote.ExpectRecord(
        Joined({{L"Started"}, UpToItem, {L"Item(1)", L"WindowHandle", L"WindowHandle", L"No references", L"Ended"}}));
}

TEST_F(OneNoteShutdown, RealWaitIsFollowedByAnAnswerThatTakesLong) {
    RunOneNote(L"Call=Count\nTrouble=wait\nMilliseconds=4000");
    EXPECT_GE(TimeToInstall(), seconds(9));
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows")});
    OneNote.ExpectRecord(Joined({{L"Started"}, UpToWindowHandle, {L"No references", L"Ended"}}));
}

TEST_F(OneNoteShutdown, RealWaitOf55SecondsEndsInATerminationWhenOneNoteIgnoresTheRequest) {
    RunOneNote(L"Closing=ignore");
    EXPECT_GE(TimeToInstall(), seconds(55));
    EXPECT_EQ(OneNote.Started().ExitCode(), 0U);
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows"), AfterWaiting(50, L"terminate process")});
    OneNote.ExpectRecord(Joined({{L"Started"}, UpToWindowHandle, {L"No references"}}));
}

TEST_F(OneNoteShutdown, RealWaitOf55SecondsEndsInATerminationWhenOneNoteAsksItsUser) {
    RunOneNote(L"Closing=ask");
    const Program frontEnd = Start(L"/config x");
    AwaitWindow(OneNote.Started(), L"#32770");
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    EXPECT_EQ(OneNote.Started().ExitCode(), 0U);
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows"), AfterWaiting(50, L"terminate process")});
    OneNote.ExpectRecord(Joined({{L"Started"}, UpToWindowHandle, {L"No references"}}));
}

TEST_F(OneNoteShutdown, RealWaitOf110SecondsWithTheDelayOptionEndsInATermination) {
    Watchdog::Allow(300);
    RunOneNote(L"Closing=ignore");
    EXPECT_GE(TimeToInstall(L"/delay "), seconds(110));
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(10, L"close windows"), AfterWaiting(100, L"terminate process")});
    OneNote.ExpectRecord(Joined({{L"Started"}, UpToWindowHandle, {L"No references"}}));
}

TEST_F(OneNoteShutdown, RealWaitOf55SecondsForDatebookeryAsksTheWindowsOfOneNote) {
    const TargetProgram datebookery; // listed before OneNote, since it began before it
    RunOneNote();
    EXPECT_GE(TimeToInstall(), seconds(55));
    EXPECT_EQ(datebookery.ExitCode(), 0U);
    ExpectLogOfPass(L"datebk.exe", {AfterWaiting(5, L"close windows"), AfterWaiting(50, L"terminate process")});
    OneNote.ExpectRecord(Joined({{L"Started"}, UpToWindowHandle, {L"No references", L"Ended"}}));
}

TEST_F(OneNoteShutdown, RealWaitOf55SecondsForDatebookeryAloneStartsAOneNoteWithoutAWindow) {
    const TargetProgram datebookery;
    OneNote.Register();
    EXPECT_GE(TimeToInstall(), seconds(55));
    EXPECT_EQ(datebookery.ExitCode(), 0U);
    ExpectLogOfPass(L"datebk.exe", {AfterWaiting(5, L"close windows"), AfterWaiting(50, L"terminate process")});
    OneNote.ExpectRecord(Joined({{L"Started by COM"}, UpToCount, {L"No references", L"Ended"}}));
}

// OneNote can't be asked

INSTANTIATE_TEST_SUITE_P(
    , OneNoteShutdownCall,
    testing::Values(Step{"Windows", {L"Windows"}, UpToWindows}, Step{"Count", {L"Count"}, UpToCount},
                    Step{"Item", {L"Item"}, UpToItem}, Step{"SecondItem", {L"Item", 2}, UpToSecondItem},
                    Step{"WindowHandle", {L"WindowHandle"}, Joined({UpToSecondItem, {L"WindowHandle"}})}),
    NameOfStep);

TEST_P(OneNoteShutdownCall, RealWaitIsTenSecondsWithTheSystemsMessageInTheLog) {
    RunOneNote(LabOneNote::Failing(GetParam().call, E_ACCESSDENIED) + TwoWindows);
    ExpectTermination(SystemErrorText(E_ACCESSDENIED), Joined({{L"Started"}, GetParam().asked, {L"No references"}}));
}

/// Wine does not carry error information from one process to another, so OneNote's objects are in the front-end's.
TEST_P(OneNoteShutdownCall, RealWaitIsTenSecondsWithItsDescriptionInTheLog) {
    OneNote.Set(LabOneNote::Failing(GetParam().call, E_ACCESSDENIED, L"A dialog is open.") + TwoWindows);
    OneNote.RegisterInProcess();
    OneNote.Start();
    ExpectTermination(L"A dialog is open. (0x80070005)", Joined({{L"Started"}, GetParam().asked, {L"No references"}}));
}

INSTANTIATE_TEST_SUITE_P(, OneNoteShutdownNull,
                         testing::Values(Step{"Collection", {L"Windows"}, UpToWindows},
                                         Step{"Window", {L"Item"}, UpToSecondItem}),
                         NameOfStep);

TEST_P(OneNoteShutdownNull, RealWaitIsTenSecondsWithAPointerErrorInTheLog) {
    RunOneNote(LabOneNote::GivingNull(GetParam().call) + TwoWindows);
    ExpectTermination(SystemErrorText(E_POINTER), Joined({{L"Started"}, GetParam().asked, {L"No references"}}));
}

TEST_F(OneNoteShutdown, RealWaitIsTenSecondsWhileADialogOfOneNoteIsOpen) {
    RunOneNote(LabOneNote::Failing({L"Windows"}, static_cast<HRESULT>(0x80042030))); // for which Windows has no text
    ExpectTermination(L"IDispatch error #7728 (0x80042030)", Joined({{L"Started"}, UpToWindows, {L"No references"}}));
}

TEST_F(OneNoteShutdown, RealWaitEndsWhenOneNoteDiesInACall) {
    RunOneNote(L"Call=Count\nTrouble=end");
    TimeToInstall();
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows"),
                                     CannotClose + SystemErrorText(HRESULT_FROM_WIN32(RPC_S_CALL_FAILED))});
    OneNote.ExpectRecord(Joined({{L"Started"}, UpToCount}));
}

TEST_F(OneNoteShutdown, RealWaitLastsAsLongAsOneNoteHangsInACall) {
    RunOneNote(L"Call=Count\nTrouble=wait\nMilliseconds=100000");
    const Program frontEnd = Start(L"/config x");
    EXPECT_EQ(WaitForSingleObject(frontEnd.Handle(), 20000), static_cast<DWORD>(WAIT_TIMEOUT));
    TerminateProcess(OneNote.Started().Handle(), 1);
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLogOfPass(L"onenote.exe", {AfterWaiting(5, L"close windows"),
                                     CannotClose + SystemErrorText(HRESULT_FROM_WIN32(RPC_S_CALL_FAILED))});
    OneNote.ExpectRecord(Joined({{L"Started"}, UpToCount}));
}

INSTANTIATE_TEST_SUITE_P(, OneNoteShutdownBusy,
                         testing::Values(Refusal{"Rejecting", RPC_E_CALL_REJECTED},
                                         Refusal{"PuttingOff", RPC_E_SERVERCALL_RETRYLATER}),
                         NameOfStep);

/// Wine's COM has other errors for calls that a server turns away, so that the stand-in returns those of Windows.
TEST_P(OneNoteShutdownBusy, RealWaitIsTenSecondsWithTheRefusalInTheLog) {
    RunOneNote(LabOneNote::Failing({L"Windows"}, GetParam().error));
    ExpectTermination(SystemErrorText(GetParam().error), Joined({{L"Started"}, UpToWindows, {L"No references"}}));
}

TEST_F(OneNoteShutdown, RealWaitIsTenSecondsWhenTheApplicationCannotBeCreated) {
    RunOneNote(LabOneNote::Failing({L"CreateInstance"}, CO_E_SERVER_EXEC_FAILURE));
    ExpectTermination(SystemErrorText(CO_E_SERVER_EXEC_FAILURE), {L"Started", L"CreateInstance"});
}

TEST_F(OneNoteShutdown, RealWaitIsTenSecondsWhenOneNoteIsNotRegistered) {
    OneNote.Start();
    ExpectTermination(SystemErrorText(REGDB_E_CLASSNOTREG), {L"Started"});
}

TEST_F(OneNoteShutdown, RealWaitIsTwentySecondsWithTheDelayOptionWhenOneNoteIsNotRegistered) {
    OneNote.Start();
    EXPECT_GE(TimeToInstall(L"/delay "), seconds(20));
    ExpectLogOfPass(L"onenote.exe",
                    {AfterWaiting(10, L"close windows"), CannotClose + SystemErrorText(REGDB_E_CLASSNOTREG),
                     AfterWaiting(10, L"terminate process")});
}

INSTANTIATE_TEST_SUITE_P(
    , OneNoteShutdownDamage,
    testing::Values(Damage{"WithoutAProgram", {L"CLSID\\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}\\LocalServer32"}, {}},
                    Damage{"WithoutATypeLibrary", {L"TypeLib\\{0EA692EE-BB50-4E3C-AEF0-356D91732725}"}, StartedInVain},
                    // Wine looks for it in both views.
                    Damage{"WithoutAnInterface",
                           {L"Interface\\{452AC71A-B655-4967-A208-A4CC39DD7949}",
                            L"Wow6432Node\\Interface\\{452AC71A-B655-4967-A208-A4CC39DD7949}"},
                           StartedInVain}),
    NameOfStep);

TEST_P(OneNoteShutdownDamage, RealWaitIsTenSecondsWithOneErrorInTheLog) {
    OneNote.Register();
    for (const wchar_t* key : GetParam().missingKeys)
        RegDeleteTreeW(HKEY_CLASSES_ROOT, key);
    const TargetProgram datebookery; // a OneNote that runs would serve its clients without a program to start
    EXPECT_GE(TimeToInstall(), seconds(10));
    EXPECT_EQ(datebookery.ExitCode(), 0U);
    const Entries log = Logged();
    const auto error = std::ranges::find_if(log, [](const auto& entry) { return entry.starts_with(CannotClose); });
    ASSERT_NE(error, log.end());
    EXPECT_TRUE(std::regex_match(*error, std::wregex(CannotClose + LR"(.+ \(0x8[0-9a-f]{7}\))"))) << *error;
    ExpectLogOfPass(L"datebk.exe", {AfterWaiting(5, L"close windows"), *error, AfterWaiting(5, L"terminate process")});
    OneNote.ExpectRecord(GetParam().record);
}
