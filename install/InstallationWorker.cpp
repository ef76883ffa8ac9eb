#include "install/InstallationWorker.h"

#include "core/ComError.h"
#include "core/Launch.h"
#include "core/LocalizedStrings.h"
#include "core/Log.h"
#include "core/Unique.h"
#include "install/AddinRepair.h"
#include "install/OneNoteProcess.h"
#include "install/Payload.h"
#include "install/ScreenState.h"
#include "install/SecureProtocols.h"
#include "install/WorkerSignals.h"

#include <chrono>

namespace {

using namespace std::chrono_literals;

/// The elevated installer is given this time to come up before it is waited for, however soon it ends.
constexpr std::chrono::milliseconds StartUpTime = 1s;

/// Between two attempts to wait for the user.
constexpr std::chrono::milliseconds NextAttempt = 100ms;

void PostState(ScreenStatus status) {
    if (UnattendedMode)
        return;
    StorePendingScreenState(ScreenStateOf(status, LoadPendingScreenState().focusIndex));
    PostMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
}

DWORD ExitCode(HANDLE process) {
    DWORD code = 0;
    if (!GetExitCodeProcess(process, &code)) {
        const DWORD error = GetLastError();
        Log(true) << L"ERROR: Failed to get the process exit code: " << error;
        ThrowWin32Error(error);
    }
    return code;
}

void AwaitSuccess(HANDLE installer) {
    Log(true) << L"Waiting for installer to finish";
    Sleep(static_cast<DWORD>(StartUpTime.count()));
    WaitForSingleObject(installer, INFINITE);
    const DWORD code = ExitCode(installer);
    if (code != 0) {
        Log(true) << L"ERROR: Installer reported failure: " << code;
        throw _com_error(static_cast<HRESULT>(code)); // the installer's exit code is the HRESULT
    }
}

/// `installer` becomes the process of the elevated installer. Throws a `_com_error` on every failure.
void InstallOnce(UniqueHandle& installer) {
    if (!WaitForOneNoteToExit())
        ThrowWin32Error(ERROR_SHARING_VIOLATION);
    Log(true) << L"State: Installing - OneNote is not running, continuing with install";
    PostState(ScreenStatus::Installing);

    installer = ExtractAndRunInstaller();
    AwaitSuccess(installer.Get());
    RepairAddinSettings();
    UpdateSecureProtocols(LR"(Software\Microsoft\Windows\CurrentVersion\Internet Settings)", true);
    UpdateSecureProtocols(LR"(Software\Policies\Microsoft\Windows\CurrentVersion\Internet Settings)", false);

    Log(true) << L"State: Complete";
    PostState(ScreenStatus::Completed);
}

void ReportFailure(const _com_error& error) {
    SetErrorText(GetLocalizedString(StrInstallFailed) + L"\n\n" + ComErrorText(error));
    Log(true) << L"ERROR: " << *ErrorText.load();
    PostState(ScreenStatus::Failed);
}

bool TryInstall() {
    UniqueHandle installer;
    try {
        InstallOnce(installer);
        return true;
    } catch (const _com_error& error) {
        installer.Release(); // stays open: the process and its exit code can still be looked at
        ReportFailure(error);
        return false;
    }
}

/// Until Retry is pressed or the worker shall end. A wait that fails is neither: it would begin an installation that
/// nobody asked for.
void AwaitSignal() {
    Log(true) << L"Waiting for a signal";
    while (WaitForSingleObject(ContinueEvent, INFINITE) == WAIT_FAILED && !ExitRequested)
        Sleep(static_cast<DWORD>(NextAttempt.count()));
}

} // namespace

DWORD WINAPI InstallationWorker(void* /*context*/) {
    Log(true) << L"Begin processing";
    CoInitialize(nullptr); // not balanced by CoUninitialize: the apartment lasts as long as the thread
    for (;;) {
        const bool installed = TryInstall();
        if (UnattendedMode)
            return installed ? 0 : 1;

        AwaitSignal();
        if (ExitRequested) {
            Log(true) << L"Exit signalled, returning from background process";
            SetEvent(WorkerDoneEvent);
            return 0;
        }
    }
}
