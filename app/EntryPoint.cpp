#include "app/AbnormalEnd.h"
#include "app/CommandLine.h"
#include "app/DpiAwareness.h"
#include "app/ErrorTexts.h"
#include "app/WorkerThread.h"
#include "checks/Requirements.h"
#include "core/Launch.h"
#include "core/LocalizedStrings.h"
#include "core/Log.h"
#include "core/UiLanguage.h"
#include "install/InstallationWorker.h"
#include "ui/Fonts.h"
#include "ui/InstallerWindow.h"
#include "ui/Logo.h"

#include <windows.h>

#include <comdef.h>

namespace {

// Before the entry point runs, and so before anything can ask for a size.
[[maybe_unused]] const bool DpiAwarenessIsSet = (SetDpiAwareness(), true);

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, wchar_t* commandLine, int /*show*/) {
    EndProcessOnUncaughtErrors();
    _com_util::CheckError(CoInitialize(nullptr)); // a failure is caught by nobody
    StartGraphics();
    LoadLocalizedStrings(SelectUiLanguage());
    FillCustomErrorTexts();
    InstanceHandle = instance;
    CommandLineText = commandLine;
    ReadCommandLine(commandLine);
    UnattendedMode = !ConfigPath.empty();
    if (!CheckRequirements())
        return 0;

    if (UnattendedMode)
        return static_cast<int>(InstallationWorker(nullptr));
    LoadLogo();
    if (!CreateInstallerWindow() || !StartWorkerThread())
        return 0;
    const int exitCode = RunMessageLoop();
    StopWorkerThread();
    CloseLog();
    return exitCode;
}
