#pragma once

#include "core/Unique.h"

#include <filesystem>
#include <string>
#include <vector>

/// A program that a test started; terminated with the object if it still runs then.
class Program {
public:
    /// Starts `file` with `arguments` as its raw command line after the program's name. It sees `temporaryFolder`,
    /// unless that is empty, as the user's temporary folder, and starts in the folder `directory`, unless that is
    /// empty; `flags` are those of CreateProcess. A test failure when it can't be started.
    explicit Program(const std::filesystem::path& file, const std::wstring& arguments = L"",
                     const std::filesystem::path& temporaryFolder = {}, const std::filesystem::path& directory = {},
                     DWORD flags = 0);
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;
    Program(Program&&) = default;
    Program& operator=(Program&&) = default;
    ~Program();

    HANDLE Handle() const { return process_.Get(); }
    DWORD Id() const { return GetProcessId(process_.Get()); }
    bool IsRunning() const { return WaitForSingleObject(process_.Get(), 0) == WAIT_TIMEOUT; }

    /// Waits for the program's end. The watchdog ends a wait without end.
    DWORD ExitCode() const;

private:
    UniqueHandle process_;
};

/// The processes that run under that name ("onenote.exe"), which is compared to the letter.
std::vector<DWORD> ProcessesNamed(const std::wstring& name);

/// A top-level window of that class of the program, visible or not; null when there is none.
HWND FindWindowOf(const Program& program, const wchar_t* windowClass);

/// Waits until there is such a window, and returns it. Waiting in vain throws, which ends the test.
HWND AwaitWindow(const Program& program, const wchar_t* windowClass);
