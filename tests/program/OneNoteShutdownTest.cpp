// Unattended installations while OneNote or Datebookery runs. The waits are the real ones.

#include "tests/support/FakeOneNote.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/Machine.h"
#include "tests/support/Watchdog.h"

namespace {

class OneNoteShutdown : public Machine {
protected:
    /// Returns the log when it has an entry that begins so. An entry is on disk once the next one has begun.
    std::wstring AwaitEntry(const std::wstring& start) const {
        const Watchdog::Waiting waiting("an entry of the front-end's log");
        for (;; Sleep(20)) {
            std::wstring log = Utf16(ReadBytes(Temporary() + L"Vellumkit_Install.log"));
            if (log.find(L" - " + start) != std::wstring::npos)
                return log;
        }
    }

    /// The log of a pass that found this program and saw it end after `waits`.
    Entries LogOfPass(const std::wstring& name, const Entries& waits) const {
        return Joined({{L"Begin processing", L"Begin processing", L"Checking if OneNote is running",
                        L"Found process '" + name + L"'", L"OneNote is still running. Waiting..."},
                       waits,
                       {L"State: Installing - OneNote is not running, continuing with install"},
                       LogOfExtraction(),
                       LogOfRepair()});
    }
};

const std::wstring CannotClose = L"ERROR: Cannot close OneNote Windows: " + SystemErrorText(REGDB_E_CLASSNOTREG);

} // namespace

TEST_F(OneNoteShutdown, IsAwaitedForFiveSecondsWhileOneNoteLeaves) {
    const TargetProgram oneNote(TargetProgram::OneNote());
    const Program frontEnd = Start(L"/config x");
    AwaitEntry(L"Found process 'onenote.exe'");
    EXPECT_TRUE(frontEnd.IsRunning());
    oneNote.TellToEnd();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLog(LogOfPass(L"onenote.exe", {}));
}

TEST_F(OneNoteShutdown, IsAwaitedForDatebookeryToo) {
    const TargetProgram datebookery(TargetProgram::Datebookery());
    const Program frontEnd = Start(L"/config x");
    AwaitEntry(L"Found process 'datebk.exe'");
    datebookery.TellToEnd();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLog(LogOfPass(L"datebk.exe", {}));
}

TEST_F(OneNoteShutdown, IsAwaitedForOnlyOneOfTwo) {
    const TargetProgram oneNote(TargetProgram::OneNote());
    const TargetProgram datebookery(TargetProgram::Datebookery());
    const Program frontEnd = Start(L"/config x");
    const bool foundOneNote = AwaitEntry(L"Found process").find(L"'onenote.exe'") != std::wstring::npos;
    (foundOneNote ? oneNote : datebookery).TellToEnd();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLog(LogOfPass(foundOneNote ? L"onenote.exe" : L"datebk.exe", {}));
    EXPECT_TRUE((foundOneNote ? datebookery : oneNote).IsRunning());
}

TEST_F(OneNoteShutdown, RealWaitTerminatesOneNoteAfterTenSecondsWithoutItsAutomation) {
    const TargetProgram oneNote(TargetProgram::OneNote(), L"/stubborn");
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(Install(L"x"), 0U);
    EXPECT_GE(GetTickCount64() - start, 11000U); // and a second for the payload
    EXPECT_FALSE(oneNote.IsRunning());
    EXPECT_EQ(oneNote.ExitCode(), 0U);
    ExpectLog(LogOfPass(L"onenote.exe",
                        {L"OneNote is still running after 5 seconds. Attempting to close windows", CannotClose,
                         L"OneNote is still running after 5 seconds. Attempting to terminate process"}));
}

TEST_F(OneNoteShutdown, RealWaitIsTenSecondsWithTheDelayOption) {
    const TargetProgram oneNote(TargetProgram::OneNote(), L"/stubborn");
    const Program frontEnd = Start(L"/delay /config x");
    Sleep(8000);
    EXPECT_EQ(Utf16(ReadBytes(Temporary() + L"Vellumkit_Install.log")).find(L"Waiting..."), std::wstring::npos)
        << "the wait should not be over";
    AwaitEntry(L"OneNote is still running after 10 seconds. Attempting to close windows");
    oneNote.TellToEnd();
    EXPECT_EQ(frontEnd.ExitCode(), 0U);
    ExpectLog(LogOfPass(L"onenote.exe",
                        {L"OneNote is still running after 10 seconds. Attempting to close windows", CannotClose}));
}

TEST_F(OneNoteShutdown, RealWaitTerminatesOneNoteThatIgnoresEverythingAfterFiftyFiveSeconds) {
    Watchdog::Allow(120);
    const RegisteredAutomation automation;
    const TargetProgram oneNote(TargetProgram::OneNote(), L"/stubborn");
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(Install(L"x"), 0U);
    EXPECT_GE(GetTickCount64() - start, 56000U); // and a second for the payload
    EXPECT_FALSE(oneNote.IsRunning());
    ExpectLog(
        LogOfPass(L"onenote.exe", {L"OneNote is still running after 5 seconds. Attempting to close windows",
                                   L"OneNote is still running after 50 seconds. Attempting to terminate process"}));
}

TEST_F(OneNoteShutdown, RealWaitEndsWhenOneNoteClosesItsWindows) {
    const RegisteredAutomation automation;
    const TargetProgram oneNote(TargetProgram::OneNote());
    EXPECT_EQ(Install(L"x"), 0U);
    EXPECT_EQ(oneNote.ExitCode(), 0U);
    ExpectLog(LogOfPass(L"onenote.exe", {L"OneNote is still running after 5 seconds. Attempting to close windows"}));
}
