#include "app/AbnormalEnd.h"
#include "app/CommandLine.h"
#include "app/DpiAwareness.h"
#include "app/ErrorMode.h"
#include "app/ErrorTexts.h"
#include "app/LibrarySearch.h"
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

struct Preparation {
    Preparation() {
        SuppressCriticalErrorBoxes(); // before a library is loaded, which may be damaged
        LimitLibrarySearch();
        SetDpiAwareness(); // before anything can ask for a size
    }
};

#if defined(__MINGW32__)
// mingw-w64 copies the command line before any constructor runs, and doesn't look whether there was memory for it.
[[gnu::section(".CRT$XCU"), gnu::used]] void (*const BeforeTheRunTimeLibrary)() = EndProcessOnProcessorFaults;
#endif

// Before the entry point runs, and before any other constructor, which might load a library.
[[gnu::init_priority(101), maybe_unused]] const Preparation Prepared;

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
    if (!UnattendedMode)
        LoadLibrariesOfWindows();
    if (!CheckRequirements())
        return 0;

    if (UnattendedMode)
        return static_cast<int>(InstallationWorker(nullptr));
    MakeFonts();
    LoadLogo();
    if (!CreateInstallerWindow() || !StartWorkerThread())
        return 0;
    const int exitCode = RunMessageLoop();
    StopWorkerThread();
    CloseLog();
    return exitCode;
}
