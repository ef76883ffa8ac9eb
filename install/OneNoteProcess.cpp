#include "install/OneNoteProcess.h"

#include "core/ComError.h"
#include "core/Launch.h"
#include "core/Log.h"
#include "install/OneNoteWindows.h"

#include <psapi.h>
#include <shlwapi.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cwctype>
#include <span>
#include <string>

namespace {

/// One handle serves the name query, the waits and the termination.
constexpr DWORD ProcessAccess = SYNCHRONIZE | PROCESS_QUERY_INFORMATION | PROCESS_VM_READ | PROCESS_TERMINATE;

/// Never grown: later processes of a machine with more of them are not looked at.
using ProcessIds = std::array<DWORD, 1024>;

std::span<const DWORD> ListProcesses(ProcessIds& buffer) {
    DWORD bytes = 0;
    if (!EnumProcesses(buffer.data(), sizeof buffer, &bytes)) {
        const DWORD error = GetLastError();
        Log(true) << L"ERROR: Failed to get list of processes: " << error;
        throw _com_error(E_UNEXPECTED);
    }
    return std::span(buffer).first(bytes / sizeof(DWORD));
}

/// The image's file name in lower case; empty when Windows doesn't tell it.
std::wstring ImageName(HANDLE process) {
    std::array<wchar_t, 1024> path{};
    GetProcessImageFileNameW(process, path.data(), static_cast<DWORD>(path.size()));
    std::wstring name = PathFindFileNameW(path.data());
    std::ranges::transform(name, name.begin(),
                           [](wchar_t character) { return static_cast<wchar_t>(std::towlower(character)); });
    return name;
}

/// A wait that fails counts as the process's end.
bool HasEndedWithin(const UniqueHandle& process, std::chrono::milliseconds limit) {
    return WaitForSingleObject(process.Get(), static_cast<DWORD>(limit.count())) != WAIT_TIMEOUT;
}

/// False when the windows could not be asked.
bool TryCloseOneNoteWindows() {
    try {
        CloseOneNoteWindows();
        return true;
    } catch (const _com_error& error) {
        Log(true) << L"ERROR: Cannot close OneNote Windows: " << ComErrorText(error);
        return false;
    }
}

} // namespace

UniqueHandle FindOneNoteProcess() {
    Log(true) << L"Checking if OneNote is running";
    ProcessIds buffer{};
    for (const DWORD id : ListProcesses(buffer)) {
        UniqueHandle process(OpenProcess(ProcessAccess, FALSE, id));
        if (!process)
            continue;
        const std::wstring name = ImageName(process.Get());
        if (name == L"onenote.exe" || name == L"datebk.exe") {
            Log(true) << L"Found process '" << name << L"'";
            return process;
        }
    }
    return {};
}

bool WaitForOneNoteToExit() {
    using namespace std::chrono_literals;
    const std::chrono::seconds baseWait = DelayOption ? 10s : 5s;
    Log(true) << L"Begin processing";
    CoInitialize(nullptr); // not balanced by CoUninitialize: the apartment lasts as long as the thread
    const UniqueHandle process = FindOneNoteProcess();
    if (!process)
        return true;

    Log(true) << L"OneNote is still running. Waiting...";
    if (HasEndedWithin(process, baseWait))
        return true;

    Log(true) << L"OneNote is still running after " << baseWait.count() << L" seconds. Attempting to close windows";
    // Windows that were not asked to close won't: no long wait for them.
    const std::chrono::seconds nextWait = TryCloseOneNoteWindows() ? 10 * baseWait : baseWait;
    if (HasEndedWithin(process, nextWait))
        return true;

    Log(true) << L"OneNote is still running after " << nextWait.count() << L" seconds. Attempting to terminate process";
    TerminateProcess(process.Get(), 0);
    if (HasEndedWithin(process, nextWait))
        return true;

    Log(true) << L"OneNote is still running after " << nextWait.count() << L" seconds.";
    return false;
}
