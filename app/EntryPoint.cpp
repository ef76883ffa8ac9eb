#include "app/AbnormalEnd.h"
#include "app/CommandLine.h"
#include "app/DpiAwareness.h"
#include "app/ErrorTexts.h"
#include "app/ProcessState.h"
#include "core/LocalizedStrings.h"
#include "install/InstallationWorker.h"

#include <windows.h>

#include <comdef.h>

namespace {

// Before the entry point runs, and so before anything can ask for a size.
[[maybe_unused]] const bool DpiAwarenessIsSet = (SetDpiAwareness(), true);

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, wchar_t* commandLine, int /*show*/) {
    EndProcessOnUncaughtErrors();
    _com_util::CheckError(CoInitialize(nullptr)); // a failure is caught by nobody
    LoadLocalizedStrings(L"en");
    FillCustomErrorTexts();
    InstanceHandle = instance;
    CommandLineText = commandLine;
    ReadCommandLine(commandLine);
    UnattendedMode = !ConfigPath.empty();

    if (UnattendedMode)
        return static_cast<int>(InstallationWorker(nullptr));
    return 0;
}
