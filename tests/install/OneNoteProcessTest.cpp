#include "install/OneNoteProcess.h"

#include "core/ComError.h"
#include "core/Launch.h"
#include "tests/support/ComApartment.h"
#include "tests/support/ComErrors.h"
#include "tests/support/FakeOneNote.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/LogText.h"
#include "tests/support/TestFolder.h"

#include <psapi.h>

#include <algorithm>
#include <gtest/gtest.h>

namespace fs = std::filesystem;

namespace {

const std::wstring Checking = L"Checking if OneNote is running";

/// Lists these processes, in this order, instead of all that run. What the list leaves of its buffer begins with
/// `behind`.
class ProcessList {
public:
    explicit ProcessList(std::vector<DWORD> ids, DWORD behind = 0) {
        Ids = std::move(ids);
        Behind = behind;
    }

private:
    static BOOL WINAPI List(DWORD* ids, DWORD size, DWORD* needed) {
        EXPECT_EQ(size, 4096U);
        *std::ranges::copy(Ids, ids).out = Behind;
        *needed = static_cast<DWORD>(Ids.size() * sizeof(DWORD));
        return TRUE;
    }

    static inline std::vector<DWORD> Ids;
    static inline DWORD Behind;
    ImportPatch<decltype(EnumProcesses)> patch_{"K32EnumProcesses", List};
};

class ListFails {
    ImportPatch<decltype(EnumProcesses)> patch_{"K32EnumProcesses", [](DWORD*, DWORD, DWORD*) -> BOOL {
                                                    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
                                                    return FALSE;
                                                }};
};

class OneNoteSearch : public testing::Test {
protected:
    /// A copy of the lab's program under that name, running.
    TargetProgram Start(const wchar_t* name) const {
        const fs::path file = folder_.Path() / name;
        fs::copy_file(Datebookery(), file);
        return TargetProgram(file);
    }

    Entries Logged() const { return log_.Get(); }

private:
    TestFolder folder_;
    LoggedEntries log_;
};

} // namespace

TEST_F(OneNoteSearch, FindsNothingOnAMachineWithoutIt) {
    EXPECT_FALSE(FindOneNoteProcess());
    EXPECT_EQ(Logged(), Entries{Checking});
}

TEST_F(OneNoteSearch, FindsOneNote) {
    const TargetProgram program = Start(L"onenote.exe");
    EXPECT_EQ(GetProcessId(FindOneNoteProcess().Get()), program.Id());
    EXPECT_EQ(Logged(), (Entries{Checking, L"Found process 'onenote.exe'"}));
}

TEST_F(OneNoteSearch, FindsDatebookery) {
    const TargetProgram program = Start(L"datebk.exe");
    EXPECT_EQ(GetProcessId(FindOneNoteProcess().Get()), program.Id());
    EXPECT_EQ(Logged(), (Entries{Checking, L"Found process 'datebk.exe'"}));
}

TEST_F(OneNoteSearch, FindsThemInAnyLetterCase) {
    const TargetProgram program = Start(L"OneNote.EXE");
    EXPECT_EQ(GetProcessId(FindOneNoteProcess().Get()), program.Id());
    EXPECT_EQ(Logged(), (Entries{Checking, L"Found process 'onenote.exe'"}));
}

TEST_F(OneNoteSearch, FindsNoOtherName) {
    const TargetProgram longer = Start(L"myonenote.exe");
    const TargetProgram backup = Start(L"onenote.exe.bak");
    EXPECT_FALSE(FindOneNoteProcess());
}

TEST_F(OneNoteSearch, EndsWithTheFirstThatIsListed) {
    const TargetProgram oneNote = Start(L"onenote.exe");
    const TargetProgram datebookery = Start(L"datebk.exe");
    {
        const ProcessList list({GetCurrentProcessId(), datebookery.Id(), oneNote.Id()});
        EXPECT_EQ(GetProcessId(FindOneNoteProcess().Get()), datebookery.Id());
    }
    const ProcessList list({GetCurrentProcessId(), oneNote.Id(), datebookery.Id()});
    EXPECT_EQ(GetProcessId(FindOneNoteProcess().Get()), oneNote.Id());
}

TEST_F(OneNoteSearch, GivesAHandleToWaitForAndToTerminate) {
    const TargetProgram program = Start(L"onenote.exe");
    const UniqueHandle process = FindOneNoteProcess();
    EXPECT_EQ(WaitForSingleObject(process.Get(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_TRUE(TerminateProcess(process.Get(), 0));
    EXPECT_EQ(program.ExitCode(), 0U);
}

TEST_F(OneNoteSearch, OpensProcessesWithOneMaskForEverything) {
    static DWORD access;
    static BOOL inherit;
    const ImportPatch<decltype(OpenProcess)> open("OpenProcess", [](DWORD wanted, BOOL inherited, DWORD) -> HANDLE {
        access = wanted;
        inherit = inherited;
        return nullptr;
    });
    EXPECT_FALSE(FindOneNoteProcess());
    EXPECT_EQ(access, 0x00100411U);
    EXPECT_FALSE(inherit);
}

TEST_F(OneNoteSearch, SkipsAProcessThatCannotBeOpened) {
    const TargetProgram program = Start(L"onenote.exe");
    const ProcessList list({0xFFFFFFFC, program.Id()});
    EXPECT_TRUE(FindOneNoteProcess());
    EXPECT_EQ(Logged(), (Entries{Checking, L"Found process 'onenote.exe'"}));
}

TEST_F(OneNoteSearch, SkipsAProcessWhoseNameCannotBeReadAndClosesItsHandle) {
    const TargetProgram program = Start(L"onenote.exe");
    const ProcessList list({program.Id()});
    static HANDLE seen;
    const ImportPatch<decltype(GetProcessImageFileNameW)> name("K32GetProcessImageFileNameW",
                                                               [](HANDLE process, LPWSTR, DWORD size) -> DWORD {
                                                                   EXPECT_EQ(size, 1024U);
                                                                   seen = process;
                                                                   return 0;
                                                               });
    EXPECT_FALSE(FindOneNoteProcess());
    EXPECT_NE(GetProcessId(seen), program.Id()) << "the handle is still open";
}

TEST_F(OneNoteSearch, FindsNothingInAnEmptyList) {
    const ProcessList list({});
    EXPECT_FALSE(FindOneNoteProcess());
    EXPECT_EQ(Logged(), Entries{Checking});
}

TEST_F(OneNoteSearch, LooksAtNoProcessBehindTheList) {
    const TargetProgram program = Start(L"onenote.exe");
    const ProcessList list({GetCurrentProcessId()}, program.Id());
    EXPECT_FALSE(FindOneNoteProcess());
}

TEST_F(OneNoteSearch, FailsWhenTheProcessesCannotBeListed) {
    const ListFails fails;
    EXPECT_EQ(ThrownBy(FindOneNoteProcess), E_UNEXPECTED);
    EXPECT_EQ(Logged(), (Entries{Checking, L"ERROR: Failed to get list of processes: 8"}));
}

namespace {

constexpr wchar_t Waiting[] = L"OneNote is still running. Waiting...";
constexpr wchar_t CannotClose[] = L"ERROR: Cannot close OneNote Windows: ";

std::wstring StillRunning(int seconds, const wchar_t* then) {
    return L"OneNote is still running after " + std::to_wstring(seconds) + L" seconds." + then;
}

/// Datebookery runs, but no wait for it takes time: each ends as the test says, and what was waited for is recorded.
class OneNoteWait : public testing::Test {
protected:
    void SetUp() override {
        Process = program_.Handle();
        Results.clear();
        Waits.clear();
        TerminatedWith.reset();
        Found = nullptr;
        DelayOption = false;
    }
    void TearDown() override { DelayOption = false; }

    bool WaitWithResults(std::vector<DWORD> results) {
        Results = std::move(results);
        return WaitForOneNoteToExit();
    }

    /// Or it is already that of something else.
    bool FoundHandleIsClosed() const { return Found != nullptr && GetProcessId(Found) != program_.Id(); }

    /// The log after the lines that every wait begins with.
    Entries Logged() const {
        Entries entries = log_.Get();
        const Entries start{L"Begin processing", Checking, L"Found process 'datebk.exe'", Waiting};
        EXPECT_TRUE(entries.size() >= start.size() && std::equal(start.begin(), start.end(), entries.begin()));
        return {entries.begin() + static_cast<std::ptrdiff_t>(start.size()), entries.end()};
    }

    /// The failure to close the windows, as it stands in the log, without the automation registered.
    static std::wstring CloseFailure() { return CannotClose + ComErrorText(_com_error(REGDB_E_CLASSNOTREG)); }

    ComApartment apartment_;
    FakeOneNote oneNote_;

    static inline std::vector<DWORD> Waits; // milliseconds
    static inline std::optional<UINT> TerminatedWith;

private:
    static DWORD WINAPI Wait(HANDLE handle, DWORD milliseconds) {
        if (GetProcessId(handle) != GetProcessId(Process))
            return Original(handle, milliseconds);
        Found = handle;
        Waits.push_back(milliseconds);
        if (Results.empty()) {
            ADD_FAILURE() << "one wait too many";
            return WAIT_OBJECT_0;
        }
        const DWORD result = Results.front();
        Results.erase(Results.begin());
        return result;
    }

    static inline decltype(WaitForSingleObject)* Original =
        ImportedNow<decltype(WaitForSingleObject)>("WaitForSingleObject");
    static inline std::vector<DWORD> Results;
    static inline HANDLE Process, Found;

    TargetProgram program_;
    LoggedEntries log_;
    ImportPatch<decltype(WaitForSingleObject)> wait_{"WaitForSingleObject", Wait};
    ImportPatch<decltype(TerminateProcess)> terminate_{"TerminateProcess", [](HANDLE, UINT code) -> BOOL {
                                                           TerminatedWith = code;
                                                           return FALSE;
                                                       }};
};

} // namespace

TEST_F(OneNoteSearch, ThatFindsNothingNeedsNoWait) {
    EXPECT_TRUE(WaitForOneNoteToExit());
    EXPECT_EQ(Logged(), (Entries{L"Begin processing", Checking}));
}

TEST_F(OneNoteSearch, IsMadeInASingleThreadedApartment) {
    EXPECT_TRUE(EntersSingleThreadedApartment(WaitForOneNoteToExit));
}

TEST_F(OneNoteSearch, ThatFailsEndsTheWaitWithItsError) {
    const ListFails fails;
    EXPECT_EQ(ThrownBy(WaitForOneNoteToExit), E_UNEXPECTED);
}

TEST_F(OneNoteWait, EndsWithTheFirstWaitAndTouchesNoWindow) {
    oneNote_.Register();
    oneNote_.Fail({L"CreateInstance"}, E_FAIL); // would be logged
    EXPECT_TRUE(WaitWithResults({WAIT_OBJECT_0}));
    EXPECT_EQ(Waits, std::vector<DWORD>{5000});
    EXPECT_EQ(Logged(), Entries{});
    EXPECT_TRUE(FoundHandleIsClosed());
}

TEST_F(OneNoteWait, TakesAFailedWaitForAnEnd) {
    oneNote_.Register();
    for (const std::size_t before : {0U, 1U, 2U}) {
        Waits.clear();
        std::vector<DWORD> results(before, WAIT_TIMEOUT);
        results.push_back(WAIT_FAILED);
        EXPECT_TRUE(WaitWithResults(results)) << before;
        EXPECT_EQ(Waits.size(), before + 1);
        EXPECT_TRUE(FoundHandleIsClosed());
    }
}

TEST_F(OneNoteWait, IsLongAfterTheWindowsWereAskedToClose) {
    oneNote_.Register();
    EXPECT_TRUE(WaitWithResults({WAIT_TIMEOUT, WAIT_OBJECT_0}));
    EXPECT_EQ(Waits, (std::vector<DWORD>{5000, 50000}));
    EXPECT_EQ(Logged(), Entries{StillRunning(5, L" Attempting to close windows")});
    EXPECT_EQ(TerminatedWith, std::nullopt);
    EXPECT_TRUE(FoundHandleIsClosed());
}

TEST_F(OneNoteWait, IsShortAfterTheWindowsCouldNotBeAsked) {
    EXPECT_TRUE(WaitWithResults({WAIT_TIMEOUT, WAIT_OBJECT_0}));
    EXPECT_EQ(Waits, (std::vector<DWORD>{5000, 5000}));
    EXPECT_EQ(Logged(), (Entries{StillRunning(5, L" Attempting to close windows"), CloseFailure()}));
    EXPECT_TRUE(FoundHandleIsClosed());
}

TEST_F(OneNoteWait, TerminatesWithExitCodeZeroAndWaitsAsLongAgain) {
    oneNote_.Register();
    EXPECT_TRUE(WaitWithResults({WAIT_TIMEOUT, WAIT_TIMEOUT, WAIT_OBJECT_0}));
    EXPECT_EQ(Waits, (std::vector<DWORD>{5000, 50000, 50000}));
    EXPECT_EQ(TerminatedWith, 0U);
    EXPECT_EQ(Logged(), (Entries{StillRunning(5, L" Attempting to close windows"),
                                 StillRunning(50, L" Attempting to terminate process")}));
    EXPECT_TRUE(FoundHandleIsClosed());
}

TEST_F(OneNoteWait, GivesUpWhenTheProcessSurvivesItsTermination) {
    EXPECT_FALSE(WaitWithResults({WAIT_TIMEOUT, WAIT_TIMEOUT, WAIT_TIMEOUT}));
    EXPECT_EQ(Waits, (std::vector<DWORD>{5000, 5000, 5000}));
    EXPECT_EQ(Logged(), (Entries{StillRunning(5, L" Attempting to close windows"), CloseFailure(),
                                 StillRunning(5, L" Attempting to terminate process"), StillRunning(5, L"")}));
    EXPECT_TRUE(FoundHandleIsClosed());
}

TEST_F(OneNoteWait, IsTwiceAsLongWithTheDelayOption) {
    DelayOption = true;
    oneNote_.Register();
    EXPECT_FALSE(WaitWithResults({WAIT_TIMEOUT, WAIT_TIMEOUT, WAIT_TIMEOUT}));
    EXPECT_EQ(Waits, (std::vector<DWORD>{10000, 100000, 100000}));
    EXPECT_EQ(Logged(), (Entries{StillRunning(10, L" Attempting to close windows"),
                                 StillRunning(100, L" Attempting to terminate process"), StillRunning(100, L"")}));
}

TEST_F(OneNoteWait, IsTenSecondsEachWithTheDelayOptionAfterAFailedClose) {
    DelayOption = true;
    EXPECT_FALSE(WaitWithResults({WAIT_TIMEOUT, WAIT_TIMEOUT, WAIT_TIMEOUT}));
    EXPECT_EQ(Waits, (std::vector<DWORD>{10000, 10000, 10000}));
}

TEST_F(OneNoteWait, LogsTheDescriptionOfAnAutomationFailure) {
    oneNote_.Register();
    oneNote_.Fail({L"Windows"}, static_cast<HRESULT>(0x80042030), L"A dialog is open.");
    EXPECT_TRUE(WaitWithResults({WAIT_TIMEOUT, WAIT_OBJECT_0}));
    EXPECT_EQ(Waits, (std::vector<DWORD>{5000, 5000}));
    EXPECT_EQ(Logged().back(), std::wstring(CannotClose) + L"A dialog is open. (0x80042030)");
}
