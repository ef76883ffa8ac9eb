#pragma once

#include "tests/support/Program.h"

/// Where the lab's programs and their data lie: out/release/lab, say.
std::filesystem::path LabFolder();

/// The stand-in for the elevated installer.
std::filesystem::path ElevatedInstaller();

/// The stand-in for Datebookery.
std::filesystem::path Datebookery();

/// A program that must not run during an installation: the lab's Datebookery, or a copy of it under another name. Ends
/// when it is told to, or with the object.
class TargetProgram {
public:
    /// Returns when the program's window is there, which is hidden.
    explicit TargetProgram(const std::filesystem::path& file = Datebookery());

    void TellToEnd() const { PostMessageW(window_, WM_CLOSE, 0, 0); }
    HWND Window() const { return window_; }
    HANDLE Handle() const { return program_.Handle(); }
    DWORD Id() const { return program_.Id(); }
    bool IsRunning() const { return program_.IsRunning(); }
    DWORD ExitCode() const { return program_.ExitCode(); }

private:
    Program program_;
    HWND window_ = nullptr;
};
