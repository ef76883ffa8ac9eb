#include "install/InstallationWorker.h"

#include "app/ErrorTexts.h"
#include "core/ComError.h"
#include "core/Launch.h"
#include "core/LocalizedStrings.h"
#include "core/Log.h"
#include "core/TempPath.h"
#include "core/Unique.h"
#include "install/ScreenState.h"
#include "install/WorkerSignals.h"
#include "tests/support/ComApartment.h"
#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LabPrograms.h"
#include "tests/support/Registry.h"
#include "tests/support/Watchdog.h"

#include <psapi.h>
#include <shellapi.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

namespace {

/// A pass with the stand-in for the elevated installer, which returns the exit code that a configuration file asks for;
/// the second before the wait for it takes no time.
class Worker : public LoggedRegistry {
protected:
    void SetUp() override {
        LoadLocalizedStrings(L"en");
        FillCustomErrorTexts();
        InstanceHandle = GetModuleHandleW(nullptr);
        UnattendedMode = true;
        ErrorText = nullptr;
        Installers.clear();
        Slept = 0;
        SetInstallerExitCode(L"0");
    }
    void TearDown() override {
        CustomErrorTexts.clear();
        ConfigPath.clear();
        UnattendedMode = false;
        InstanceHandle = nullptr;
    }

    static void SetInstallerExitCode(const wchar_t* code) {
        ConfigPath = TempPath(L"lab.ini");
        WritePrivateProfileStringW(L"ElevatedInstaller", L"ExitCode", code, ConfigPath.c_str());
    }

    bool HasLogged(const std::wstring& entry) const { return std::ranges::count(Logged(), entry) == 1; }

    static bool IsOpen(HANDLE handle) {
        DWORD flags = 0;
        return GetHandleInformation(handle, &flags) != FALSE;
    }

    static inline std::vector<HANDLE> Installers; // as the shell returned them
    static inline DWORD Slept;                    // milliseconds

private:
    /// Runs the installer without the shell, which would not find its own settings in the sandbox.
    static BOOL WINAPI Execute(SHELLEXECUTEINFOW* execution) {
        std::wstring commandLine = std::wstring(L"\"") + execution->lpFile + L"\" " + execution->lpParameters;
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION information{};
        EXPECT_TRUE(CreateProcessW(execution->lpFile, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                                   &startup, &information));
        CloseHandle(information.hThread);
        execution->hProcess = information.hProcess;
        Installers.push_back(information.hProcess);
        return TRUE;
    }

    ImportPatch<decltype(Sleep)> sleep_{"Sleep", [](DWORD milliseconds) { Slept += milliseconds; }};
    ImportPatch<decltype(ShellExecuteExW)> execute_{"ShellExecuteExW", Execute};
};

constexpr wchar_t Failed[] = L"Installation failed:\n\n";

} // namespace

TEST_F(Worker, ReturnsZeroWhenThePassSucceeds) {
    EXPECT_EQ(InstallationWorker(nullptr), 0U);
    const Entries log = Logged();
    const Entries start{L"Begin processing", L"Begin processing", L"Checking if OneNote is running",
                        L"State: Installing - OneNote is not running, continuing with install",
                        L"Folder path is: " + TempPath(L"Vellumkit")};
    ASSERT_GE(log.size(), start.size());
    EXPECT_EQ(Entries(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(start.size())), start);
    EXPECT_EQ(log.back(), L"State: Complete");
    EXPECT_TRUE(HasLogged(L"Waiting for installer to finish"));
    EXPECT_TRUE(HasLogged(L"Updated to 2688"));
    EXPECT_EQ(std::ranges::count(log, L"Internet Security Settings"), 2);
    EXPECT_EQ(ErrorText.load(), nullptr);
    EXPECT_EQ(Slept, 1000U);
}

TEST_F(Worker, EntersASingleThreadedApartment) {
    EXPECT_TRUE(EntersSingleThreadedApartment([] { InstallationWorker(nullptr); }));
}

TEST_F(Worker, InitialisesComItselfAndWithTheSearchForOneNote) {
    static int calls;
    calls = 0;
    const ImportPatch<decltype(CoInitialize)> initialize("CoInitialize", [](LPVOID reserved) -> HRESULT {
        EXPECT_EQ(reserved, nullptr);
        ++calls;
        return E_OUTOFMEMORY; // which nobody checks
    });
    EXPECT_EQ(InstallationWorker(nullptr), 0U);
    EXPECT_EQ(calls, 2);
}

TEST_F(Worker, ClosesTheInstallersHandleAfterASuccess) {
    InstallationWorker(nullptr);
    ASSERT_EQ(Installers.size(), 1U);
    EXPECT_FALSE(IsOpen(Installers[0]));
}

TEST_F(Worker, LeavesTheInstallersHandleOpenAfterAFailure) {
    SetInstallerExitCode(L"1");
    EXPECT_EQ(InstallationWorker(nullptr), 1U);
    ASSERT_EQ(Installers.size(), 1U);
    EXPECT_TRUE(IsOpen(Installers[0]));
    CloseHandle(Installers[0]);
}

TEST_F(Worker, TakesTheInstallersExitCodeForAnHresult) {
    SetInstallerExitCode(L"-100");
    EXPECT_EQ(InstallationWorker(nullptr), 1U);
    EXPECT_EQ(*ErrorText.load(), std::wstring(Failed) + L"Failed to read installation resource. (0xffffff9c)");
    const Entries log = Logged();
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2], L"ERROR: Installer reported failure: 4294967196");
    EXPECT_EQ(log.back(), L"ERROR: " + *ErrorText.load());
    EXPECT_FALSE(HasLogged(L"State: Complete"));
}

TEST_F(Worker, RepairsNothingAfterAFailedInstaller) {
    SetInstallerExitCode(L"5");
    InstallationWorker(nullptr);
    EXPECT_EQ(std::ranges::count(Logged(), L"Internet Security Settings"), 0);
}

TEST_F(Worker, FailsWhenTheInstallersExitCodeCannotBeRead) {
    const ImportPatch<decltype(GetExitCodeProcess)> get("GetExitCodeProcess", [](HANDLE, LPDWORD) -> BOOL {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    });
    EXPECT_EQ(InstallationWorker(nullptr), 1U);
    EXPECT_TRUE(HasLogged(L"ERROR: Failed to get the process exit code: 5"));
    EXPECT_TRUE(ErrorText.load()->ends_with(L" (0x80070005)"));
}

TEST_F(Worker, FailsWhenTheShellStartedNoProcess) {
    const ImportPatch<decltype(ShellExecuteExW)> execute("ShellExecuteExW", [](SHELLEXECUTEINFOW* execution) -> BOOL {
        execution->hProcess = nullptr;
        return TRUE;
    });
    EXPECT_EQ(InstallationWorker(nullptr), 1U);
    EXPECT_TRUE(HasLogged(L"Waiting for installer to finish"));
    EXPECT_TRUE(HasLogged(L"ERROR: Failed to get the process exit code: 6"));
    EXPECT_TRUE(ErrorText.load()->ends_with(L" (0x80070006)"));
}

TEST_F(Worker, FailsWhenTheUserRefusesElevation) {
    const ImportPatch<decltype(ShellExecuteExW)> execute("ShellExecuteExW", [](SHELLEXECUTEINFOW*) -> BOOL {
        SetLastError(ERROR_CANCELLED);
        return FALSE;
    });
    EXPECT_EQ(InstallationWorker(nullptr), 1U);
    EXPECT_EQ(*ErrorText.load(), Failed + ComErrorText(_com_error(HRESULT_FROM_WIN32(ERROR_CANCELLED))));
}

TEST_F(Worker, FailsWhenTheProtocolsCannotBeUpdatedThoughTheInstallerSucceeded) {
    const ImportPatch<decltype(RegCreateKeyExW)> create("RegCreateKeyExW",
                                                        [](HKEY, LPCWSTR, DWORD, LPWSTR, DWORD, REGSAM,
                                                           LPSECURITY_ATTRIBUTES, PHKEY,
                                                           LPDWORD) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_EQ(InstallationWorker(nullptr), 1U);
    EXPECT_TRUE(ErrorText.load()->ends_with(L" (0x80070005)"));
}

TEST_F(Worker, FailsWhenTheProcessesCannotBeListed) {
    const ImportPatch<decltype(EnumProcesses)> list("K32EnumProcesses",
                                                    [](DWORD*, DWORD, DWORD*) -> BOOL { return FALSE; });
    EXPECT_EQ(InstallationWorker(nullptr), 1U);
    EXPECT_EQ(*ErrorText.load(), Failed + ComErrorText(_com_error(E_UNEXPECTED)));
}

TEST_F(Worker, FailsWhenTheFoundProgramSurvivesItsTermination) {
    const TargetProgram datebookery;
    {
        const ImportPatch<decltype(WaitForSingleObject)> wait("WaitForSingleObject",
                                                              [](HANDLE, DWORD) -> DWORD { return WAIT_TIMEOUT; });
        const ImportPatch<decltype(TerminateProcess)> terminate("TerminateProcess",
                                                                [](HANDLE, UINT) -> BOOL { return FALSE; });
        EXPECT_EQ(InstallationWorker(nullptr), 1U);
    }
    EXPECT_EQ(*ErrorText.load(), Failed + SystemMessage(static_cast<HRESULT>(0x80070020)) + L" (0x80070020)");
    EXPECT_EQ(Logged().back(), L"ERROR: " + *ErrorText.load());
    EXPECT_TRUE(Installers.empty());
}

TEST_F(Worker, LetsAnyOtherExceptionThrough) {
    const ImportPatch<decltype(EnumProcesses)> list(
        "K32EnumProcesses", [](DWORD*, DWORD, DWORD*) -> BOOL { throw std::runtime_error("not a COM error"); });
    EXPECT_THROW(InstallationWorker(nullptr), std::runtime_error);
}

TEST_F(Worker, PostsNothingInUnattendedMode) {
    static int posts;
    const ImportPatch<decltype(PostMessageW)> post("PostMessageW", [](HWND, UINT, WPARAM, LPARAM) -> BOOL {
        ++posts;
        return TRUE;
    });
    InstallationWorker(nullptr);
    SetInstallerExitCode(L"1");
    InstallationWorker(nullptr);
    EXPECT_EQ(posts, 0);
}

namespace {

/// The worker on a thread of its own, with a window that receives its states.
class WindowedWorker : public Worker {
protected:
    void SetUp() override {
        Worker::SetUp();
        UnattendedMode = false;
        ExitRequested = false;
        PendingScreenState = {.focusIndex = 7};
        MainWindow = CreateWindowExW(0, L"Static", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        ContinueEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
        WorkerDoneEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    }

    void TearDown() override {
        DestroyWindow(MainWindow);
        CloseHandle(ContinueEvent);
        CloseHandle(WorkerDoneEvent);
        MainWindow = nullptr;
        ContinueEvent = WorkerDoneEvent = nullptr;
        ExitRequested = false;
        PendingScreenState = {};
        Worker::TearDown();
    }

    /// One pass on the thread of the test, as if the window had been closed meanwhile.
    static void RunOnce() {
        ExitRequested = true;
        SetEvent(ContinueEvent);
        EXPECT_EQ(InstallationWorker(nullptr), 0U);
    }

    void Start() {
        worker_ = std::jthread([this] { result_ = InstallationWorker(nullptr); });
    }

    /// Waits for the next state. The worker goes on meanwhile, so only the last one of a pass can be looked at.
    static void AwaitState() {
        const Watchdog::Waiting waiting("a state that the worker posts");
        MSG message{};
        ASSERT_GT(GetMessageW(&message, MainWindow, 0, 0), 0);
        EXPECT_EQ(message.message, 0x500U);
        EXPECT_TRUE(message.wParam == 0 && message.lParam == 0);
    }

    /// The two states of a pass: Installing, and how it ended.
    static void AwaitPass() {
        AwaitState();
        AwaitState();
    }

    DWORD End() {
        ExitRequested = true;
        SetEvent(ContinueEvent);
        EXPECT_EQ(WaitForSingleObject(WorkerDoneEvent, 30000), WAIT_OBJECT_0);
        worker_.join();
        return result_;
    }

private:
    DWORD result_ = 99;
    std::jthread worker_;
};

} // namespace

TEST_F(WindowedWorker, PostsInstallingAndCompleted) {
    Start();
    AwaitPass();
    EXPECT_EQ(PendingScreenState.status, ScreenStatus::Completed);
    EXPECT_TRUE(PendingScreenState.primaryEnabled && PendingScreenState.secondaryEnabled);
    EXPECT_STREQ(PendingScreenState.primaryLabel, L"&Close");
    EXPECT_STREQ(PendingScreenState.secondaryLabel, L"&Start OneNote");
    EXPECT_EQ(PendingScreenState.focusIndex, 1);
    EXPECT_EQ(End(), 0U);
    EXPECT_EQ(Installers.size(), 1U) << "one pass, and then a wait";
    const Entries log = Logged();
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ(Entries(log.end() - 3, log.end()), (Entries{L"State: Complete", L"Waiting for a signal",
                                                          L"Exit signalled, returning from background process"}));
}

TEST_F(WindowedWorker, SleepsASecondAndThenWaitsWithoutEndForTheInstallerAndForASignal) {
    using Wait = std::pair<HANDLE, DWORD>; // in milliseconds; a sleep has no handle
    static std::vector<Wait> waits;
    static auto* const Original = ImportedNow<decltype(WaitForSingleObject)>("WaitForSingleObject");
    waits.clear();
    const auto recordSleep = [](DWORD milliseconds) { waits.emplace_back(nullptr, milliseconds); };
    const auto recordWait = [](HANDLE handle, DWORD milliseconds) -> DWORD {
        waits.emplace_back(handle, milliseconds);
        return Original(handle, milliseconds);
    };
    const ImportPatch<decltype(Sleep)> sleep("Sleep", recordSleep);
    const ImportPatch<decltype(WaitForSingleObject)> wait("WaitForSingleObject", recordWait);
    RunOnce();
    ASSERT_EQ(Installers.size(), 1U);
    EXPECT_EQ(waits, (std::vector<Wait>{{nullptr, 1000}, {Installers[0], INFINITE}, {ContinueEvent, INFINITE}}));
}

TEST_F(WindowedWorker, LogsItsSuccessThenPostsItAndThenClosesTheInstallersHandle) {
    static auto* const Original = ImportedNow<decltype(CloseHandle)>("CloseHandle");
    const ImportPatch<decltype(PostMessageW)> post("PostMessageW", [](HWND, UINT, WPARAM, LPARAM) -> BOOL {
        Log(true) << L"(posted)";
        return TRUE;
    });
    const ImportPatch<decltype(CloseHandle)> close("CloseHandle", [](HANDLE handle) -> BOOL {
        if (!Installers.empty() && handle == Installers[0])
            Log(true) << L"(closed)";
        return Original(handle);
    });
    RunOnce();
    const Entries log = Logged();
    const auto success = std::ranges::find(log, L"State: Complete");
    EXPECT_EQ(Entries(success, log.end()),
              (Entries{L"State: Complete", L"(posted)", L"(closed)", L"Waiting for a signal",
                       L"Exit signalled, returning from background process"}));
}

TEST_F(WindowedWorker, PostsInstallingWithoutButtonsAndLeavesTheFocusAlone) {
    static ScreenState installing;
    installing = {.status = ScreenStatus::Failed};
    PendingScreenState.primaryEnabled = PendingScreenState.secondaryEnabled = true;
    PendingScreenState.primaryLabel = PendingScreenState.secondaryLabel = L"old";
    const ImportPatch<decltype(PostMessageW)> post("PostMessageW", [](HWND, UINT, WPARAM, LPARAM) -> BOOL {
        if (installing.status != ScreenStatus::Installing)
            installing = PendingScreenState;
        else
            SetEvent(WorkerDoneEvent); // the pass is over
        return TRUE;
    });
    Start();
    EXPECT_EQ(WaitForSingleObject(WorkerDoneEvent, 30000), WAIT_OBJECT_0);
    EXPECT_EQ(installing.status, ScreenStatus::Installing);
    EXPECT_FALSE(installing.primaryEnabled || installing.secondaryEnabled);
    EXPECT_STREQ(installing.primaryLabel, L"");
    EXPECT_STREQ(installing.secondaryLabel, L"");
    EXPECT_EQ(installing.focusIndex, 7);
    End();
}

TEST_F(WindowedWorker, PostsFailedWithTheErrorText) {
    SetInstallerExitCode(L"-99");
    Start();
    AwaitPass();
    EXPECT_EQ(PendingScreenState.status, ScreenStatus::Failed);
    EXPECT_TRUE(PendingScreenState.primaryEnabled);
    EXPECT_FALSE(PendingScreenState.secondaryEnabled);
    EXPECT_STREQ(PendingScreenState.primaryLabel, L"&Retry >");
    EXPECT_STREQ(PendingScreenState.secondaryLabel, L"");
    EXPECT_EQ(PendingScreenState.focusIndex, 0);
    EXPECT_EQ(*ErrorText.load(),
              L"Installation failed:\n\nFailed to create temporary file. Make sure you have enough disk space "
              L"and then click Retry. (0xffffff9d)");
    EXPECT_EQ(End(), 0U);
    CloseHandle(Installers.at(0));
}

TEST_F(WindowedWorker, BeginsANewPassWithTheSearchForOneNoteWhenTheUserRetries) {
    SetInstallerExitCode(L"1");
    Start();
    AwaitPass();
    EXPECT_EQ(PendingScreenState.status, ScreenStatus::Failed);
    SetInstallerExitCode(L"0");
    SetEvent(ContinueEvent);
    AwaitPass();
    EXPECT_EQ(PendingScreenState.status, ScreenStatus::Completed);
    EXPECT_EQ(End(), 0U);
    const Entries log = Logged();
    const auto retry = std::ranges::find(log, L"Waiting for a signal");
    EXPECT_EQ(std::count(log.begin(), retry, L"Begin processing"), 2);
    EXPECT_EQ(std::count(retry, log.end(), L"Begin processing"), 1);
    EXPECT_EQ(std::count(retry, log.end(), L"State: Complete"), 1);
    CloseHandle(Installers.at(0));
}

TEST_F(WindowedWorker, WaitsAgainForTheUserWhenAWaitFails) {
    static auto* const Original = ImportedNow<decltype(WaitForSingleObject)>("WaitForSingleObject");
    static int failures;
    failures = 3;
    const ImportPatch<decltype(WaitForSingleObject)> wait("WaitForSingleObject", [](HANDLE handle, DWORD limit) {
        if (handle != ContinueEvent)
            return Original(handle, limit);
        ExitRequested = failures-- == 0;
        return ExitRequested ? WAIT_OBJECT_0 : WAIT_FAILED;
    });
    EXPECT_EQ(InstallationWorker(nullptr), 0U);
    EXPECT_EQ(Installers.size(), 1U) << "nobody asked for another pass";
}

TEST_F(WindowedWorker, EndsAlsoWhenNoWaitForTheUserSucceeds) {
    static auto* const Original = ImportedNow<decltype(WaitForSingleObject)>("WaitForSingleObject");
    const ImportPatch<decltype(WaitForSingleObject)> wait("WaitForSingleObject", [](HANDLE handle, DWORD limit) {
        return handle == ContinueEvent ? WAIT_FAILED : Original(handle, limit);
    });
    RunOnce();
    EXPECT_EQ(Installers.size(), 1U);
}

TEST_F(WindowedWorker, FinishesThePassThatRunsWhenTheWindowIsClosed) {
    WritePrivateProfileStringW(L"ElevatedInstaller", L"Milliseconds", L"1500", ConfigPath.c_str());
    Start();
    AwaitState();
    DestroyWindow(MainWindow);
    EXPECT_EQ(End(), 0U);
    WritePrivateProfileStringW(L"ElevatedInstaller", L"Milliseconds", nullptr, ConfigPath.c_str());
    const Entries log = Logged();
    ASSERT_GE(log.size(), 3U);
    EXPECT_EQ(log[log.size() - 3], L"State: Complete");
    EXPECT_EQ(log.back(), L"Exit signalled, returning from background process");
}
