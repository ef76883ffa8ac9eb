#include "install/OneNoteStart.h"

#include "core/ComError.h"
#include "core/Log.h"
#include "install/OneNoteAutomation.h"

namespace {

void EnsureWindow(const OneNoteApplicationPtr& application) {
    if (CountOf(WindowsOf(application)) != 0)
        return;
    const _bstr_t none(L"");
    ThrowIfCallFailed(application->NavigateTo(none, none, VARIANT_TRUE), application);
}

void BringToFront(const OneNoteApplicationPtr& application) {
    CoAllowSetForegroundWindow(application, nullptr); // if this is refused, OneNote comes up behind another window
    const OneNoteWindowsPtr windows = WindowsOf(application);
    OneNoteWindowPtr window;
    ThrowIfCallFailed(windows->get_CurrentWindow(&window), windows);
    SetForegroundWindow(HandleOf(window));
}

} // namespace

void StartOneNote() {
    try {
        Log(true) << L"Starting OneNote";
        const OneNoteApplicationPtr application = ConnectToOneNote();
        EnsureWindow(application);
        BringToFront(application);
        Log(true) << L"Started OneNote";
    } catch (const _com_error& error) {
        Log(true) << L"ERROR: Failed to start OneNote: " << ComErrorText(error);
    }
}
