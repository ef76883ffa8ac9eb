// Stands in for OneNote: shows windows, and answers automation as a COM local server. COM starts it on demand, then
// without a window until NavigateTo opens one; started by hand it opens its windows itself. It ends when its windows
// are closed and no client holds a reference, but waits for the first window or client.
//
//     /settings FILE   how it behaves: a file like lab/sample.ini (default: lab.ini in the temporary folder)
//     /register        registers it for automation, with the same settings, and ends
//     /unregister      removes it from the registry, and ends
//
// The exit code is 0, or the HRESULT of what failed.

#include "core/TempPath.h"
#include "lab/onenote/Automation.h"
#include "lab/onenote/Behaviour.h"
#include "lab/onenote/OpenWindows.h"
#include "lab/onenote/Record.h"
#include "lab/onenote/Registration.h"

#include <OneNoteLibrary.h>
#include <shellapi.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace {

enum class Task { Run, RunEmbedded, Register, Unregister };

struct Options {
    Task task = Task::Run;
    std::wstring settings = TempPath(L"lab.ini");
};

Options ReadOptions() {
    Options options;
    std::error_code unusable;
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int index = 1; index < count; ++index) {
        const std::wstring_view argument = arguments[index];
        if (argument == L"-Embedding") // so COM calls
            options.task = Task::RunEmbedded;
        else if (argument == L"/register")
            options.task = Task::Register;
        else if (argument == L"/unregister")
            options.task = Task::Unregister;
        else if (argument == L"/settings" && index + 1 < count)
            options.settings = std::filesystem::absolute(arguments[++index], unusable);
    }
    LocalFree(arguments);
    return options;
}

void DispatchUntilUnused() {
    const bool hadWindows = HasWindows();
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message); // calls of clients are messages too
        if ((hadWindows || HadClients()) && !HasWindows() && !HasClients())
            return;
    }
}

/// One that is not registered serves nobody, although Windows would let it.
HRESULT RegisterClassObjects() {
    HRESULT result = S_OK;
    for (const CLSID& automation : {__uuidof(Application), __uuidof(Application2)}) {
        DWORD registration = 0; // CoUninitialize revokes it
        if (IsRegistered() && SUCCEEDED(result))
            result = CoRegisterClassObject(automation, ClassObject(), CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                           &registration);
    }
    return result;
}

HRESULT Run(const Options& options) {
    Behaviour::ReadFrom(options.settings);
    RecordBeside(options.settings);
    const HRESULT result = RegisterClassObjects();
    if (FAILED(result))
        return result;
    for (unsigned left = options.task == Task::Run ? Behaviour::WindowsAtStart() : 0; left != 0; --left)
        OpenWindow();
    Record(options.task == Task::Run ? L"Started" : L"Started by COM");
    DispatchUntilUnused();
    Record(L"Ended");
    return S_OK;
}

HRESULT Perform(const Options& options) {
    switch (options.task) {
    case Task::Register:
        return RegisterOneNote(L"/settings \"" + options.settings + L'"');
    case Task::Unregister:
        return UnregisterOneNote();
    default:
        return Run(options);
    }
}

} // namespace

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* /*commandLine*/, int /*show*/) {
    const Options options = ReadOptions();
    CoInitialize(nullptr);
    const HRESULT result = Perform(options);
    CoUninitialize();
    return static_cast<int>(result);
}
