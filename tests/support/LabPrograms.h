#pragma once

#include "tests/support/Program.h"

#include <string>

/// The stand-in for the elevated installer.
std::filesystem::path ElevatedInstaller();

/// OneNote's automation on this machine as long as it lives: the tests' in-process server.
class RegisteredAutomation {
public:
    RegisteredAutomation();
    RegisteredAutomation(const RegisteredAutomation&) = delete;
    RegisteredAutomation& operator=(const RegisteredAutomation&) = delete;
    ~RegisteredAutomation() { Remove(); }

    static void Remove();
};

/// A program that must not run during an installation: the lab's onenote.exe or datebk.exe, or a copy of it under
/// another name. Ends when it is told to, or with the object.
class TargetProgram {
public:
    /// Returns when the program's window is there. `options` are those of the lab's program.
    explicit TargetProgram(const std::filesystem::path& file, const std::wstring& options = L"");

    static std::filesystem::path OneNote();
    static std::filesystem::path Datebookery();

    void TellToEnd() const { SetEvent(end_.Get()); }
    HWND Window() const { return window_; }
    HANDLE Handle() const { return program_.Handle(); }
    DWORD Id() const { return program_.Id(); }
    bool IsRunning() const { return program_.IsRunning(); }
    DWORD ExitCode() const { return program_.ExitCode(); }

private:
    std::wstring endName_;
    UniqueHandle end_;
    Program program_;
    HWND window_ = nullptr;
};
