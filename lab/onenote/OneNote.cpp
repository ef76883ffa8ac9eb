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
#include "core/Unique.h"
#include "lab/onenote/Behaviour.h"
#include "lab/onenote/ConfiguredOneNote.h"
#include "lab/onenote/OpenWindows.h"
#include "lab/onenote/Record.h"
#include "lab/onenote/Registration.h"

#include <OneNoteLibrary.h>
#include <comdef.h>
#include <shellapi.h>

#include <filesystem>
#include <memory>
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
    std::error_code ignored;
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&LocalFree)> list(CommandLineToArgvW(GetCommandLineW(), &count),
                                                               LocalFree);
    for (int index = 1; index < count; ++index) {
        const std::wstring_view argument = list.get()[index];
        if (argument == L"-Embedding") // so COM calls
            options.task = Task::RunEmbedded;
        else if (argument == L"/register")
            options.task = Task::Register;
        else if (argument == L"/unregister")
            options.task = Task::Unregister;
        else if (argument == L"/settings" && index + 1 < count)
            options.settings = std::filesystem::absolute(list.get()[++index], ignored);
    }
    return options;
}

void DispatchUntilUnused(const ConfiguredOneNote& oneNote) {
    const bool hadWindows = HasWindows();
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        DispatchMessageW(&message); // calls of clients are messages too
        if ((hadWindows || oneNote.WasCalled()) && !HasWindows() && oneNote.References() == 0)
            return;
    }
}

struct ClassRegistrationTraits {
    using Handle = DWORD;
    static constexpr Handle None = 0;
    static bool IsOpen(Handle registration) { return registration != None; }
    static void Close(Handle registration) { CoRevokeClassObject(registration); }
};
using UniqueClassRegistration = Unique<ClassRegistrationTraits>;

/// Nothing for a OneNote that is not registered: Windows would let it serve clients, and the tests need one that does
/// not.
UniqueClassRegistration Serve(ConfiguredOneNote& oneNote, const CLSID& automation) {
    UniqueClassRegistration registration;
    if (IsRegistered())
        _com_util::CheckError(CoRegisterClassObject(automation, &oneNote, CLSCTX_LOCAL_SERVER, REGCLS_MULTIPLEUSE,
                                                    registration.Receive()));
    return registration;
}

void ServeUntilUnused(const std::wstring& settings, bool byHand) {
    static ConfiguredOneNote oneNote(settings); // COM may keep references to the class object until it is uninitialised
    const UniqueClassRegistration application = Serve(oneNote, __uuidof(Application));
    const UniqueClassRegistration application2 = Serve(oneNote, __uuidof(Application2));
    for (unsigned left = byHand ? Behaviour::WindowsAtStart() : 0; left != 0; --left)
        OpenWindow();
    Record(byHand ? L"Started" : L"Started by COM");
    DispatchUntilUnused(oneNote);
}

void Perform(const Options& options) {
    switch (options.task) {
    case Task::Register:
        RegisterOneNote(L"/settings \"" + options.settings + L'"');
        break;
    case Task::Unregister:
        UnregisterOneNote();
        break;
    default:
        ServeUntilUnused(options.settings, options.task == Task::Run);
        Record(L"Ended");
        break;
    }
}

} // namespace

int WINAPI wWinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, wchar_t* /*commandLine*/, int /*show*/) {
    HRESULT result = CoInitialize(nullptr);
    try {
        Perform(ReadOptions());
    } catch (const _com_error& error) {
        result = error.Error();
    }
    CoUninitialize();
    return static_cast<int>(result);
}
