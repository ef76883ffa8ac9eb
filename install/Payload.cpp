#include "install/Payload.h"

#include "core/ComError.h"
#include "core/Launch.h"
#include "core/Log.h"
#include "core/TempPath.h"
#include "install/WorkerSignals.h"

#include <shellapi.h>
#include <shlwapi.h>

#include <array>
#include <cstring>
#include <optional>

namespace {

constexpr WORD PayloadResource = 200;

/// Stays valid as long as the module: a resource needs no release.
std::span<const char> LoadPayload() {
    const HRSRC resource = FindResourceW(InstanceHandle, MAKEINTRESOURCEW(PayloadResource), L"FILE");
    if (resource == nullptr)
        throw _com_error(ErrorReadResource);
    const DWORD size = SizeofResource(InstanceHandle, resource);
    Log(true) << L"    Size of the file is: " << size;
    const HGLOBAL loaded = LoadResource(InstanceHandle, resource);
    const void* const bytes = loaded != nullptr ? LockResource(loaded) : nullptr;
    if (bytes == nullptr || size == 0)
        throw _com_error(ErrorReadResource);
    return {static_cast<const char*>(bytes), size};
}

/// What the file holds now; nothing when it could not be written whole.
std::optional<std::span<const char>> ExtractPayload(const std::wstring& path) {
    Log(true) << L"Extracting installer to " << path;
    Log(true) << L"    Installing file at resource id: " << PayloadResource << L" to path: " << path;
    Log(true) << L"    Loading from resource";
    const std::span<const char> payload = LoadPayload();
    SetLastError(ERROR_SUCCESS);
    Log(true) << L"    Writing to the given path";
    bool whole = false;
    if (!WriteBytesToFile(path, payload, &whole))
        ThrowWin32Error(GetLastError()); // a file that was refused without a code fails the pass too, as error 0
    Log(true) << L"    Done.";
    return whole ? std::optional(payload) : std::nullopt;
}

/// Nobody can write, rename or delete the file while this is open. None when somebody has it open for that already; the
/// shell tells whether it starts such a file.
UniqueHandle KeepFromChanging(const std::wstring& path) {
    return UniqueHandle(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
}

/// True also for a file that somebody else locks, which Windows would start all the same. False when it can't be read
/// for another reason: that is no proof of other bytes.
bool HoldsSomethingElse(HANDLE file, std::span<const char> bytes) {
    std::array<char, 65536> chunk{};
    DWORD count = 0;
    while (ReadFile(file, chunk.data(), static_cast<DWORD>(chunk.size()), &count, nullptr)) {
        const auto read = std::span(chunk).first(count);
        if (read.empty())
            return !bytes.empty();
        if (read.size() > bytes.size() || std::memcmp(read.data(), bytes.data(), read.size()) != 0)
            return true;
        bytes = bytes.subspan(read.size());
    }
    return GetLastError() == ERROR_LOCK_VIOLATION;
}

UniqueHandle RunElevated(const std::wstring& path) {
    // The folder is not quoted, even with blanks in it: the elevated installer takes exactly this text.
    const std::wstring parameters = TempPath(L"") + L' ' + ConfigPath;
    SHELLEXECUTEINFOW execution{};
    execution.cbSize = sizeof execution;
    execution.fMask = SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC;
    execution.hwnd = MainWindow; // owns the elevation prompt
    execution.lpFile = path.c_str();
    execution.lpParameters = parameters.c_str();
    execution.nShow = SW_HIDE;
    if (!ShellExecuteExW(&execution))
        ThrowWin32Error(GetLastError());
    return UniqueHandle(execution.hProcess);
}

} // namespace

void EnsureFolder(const std::wstring& path) {
    Log(true) << L"Folder path is: " << path;
    if (PathIsDirectoryW(path.c_str())) {
        Log(true) << L"Folder already exists";
        return;
    }
    Log(true) << L"Folder does not exist, creating...";
    SetLastError(ERROR_SUCCESS);
    if (!CreateDirectoryW(path.c_str(), nullptr)) {
        const DWORD code = GetLastError();
        if (code == ERROR_SUCCESS)
            throw _com_error(ErrorTempFile);
        ThrowWin32Error(code);
    }
    Log(true) << L"Done.";
}

bool WriteBytesToFile(const std::wstring& path, std::span<const char> bytes, bool* whole) {
    const UniqueHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file)
        return false;
    DWORD count = 0;
    const BOOL written = WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &count, nullptr);
    if (whole != nullptr)
        *whole = written && count == bytes.size();
    return true;
}

UniqueHandle ExtractAndRunInstaller() {
    EnsureFolder(TempPath(L"Vellumkit"));
    const std::wstring path = TempPath(LR"(Vellumkit\Vellumkit Installer.exe)");
    const auto written = ExtractPayload(path);
    const UniqueHandle kept = KeepFromChanging(path); // until the shell has started it
    if (written && kept && HoldsSomethingElse(kept.Get(), *written))
        ThrowWin32Error(ERROR_SHARING_VIOLATION); // somebody else wrote to it
    return RunElevated(path);
}
