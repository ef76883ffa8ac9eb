#include "tests/support/Program.h"

#include "tests/support/WaitUntil.h"
#include "tests/support/Watchdog.h"

#include <windows.h>

#include <tlhelp32.h>

#include <array>
#include <gtest/gtest.h>

namespace {

/// Sets an environment variable of this process as long as it lives; a child inherits it.
class ScopedVariable {
public:
    ScopedVariable(const wchar_t* name, const std::wstring& value) : name_(name) {
        GetEnvironmentVariableW(name, old_.data(), static_cast<DWORD>(old_.size()));
        SetEnvironmentVariableW(name, value.c_str());
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { SetEnvironmentVariableW(name_, old_.data()); }

private:
    const wchar_t* name_;
    std::array<wchar_t, 1024> old_{};
};

UniqueHandle Start(const std::filesystem::path& file, std::wstring commandLine, const wchar_t* directory, DWORD flags) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION information{};
    EXPECT_TRUE(CreateProcessW(file.c_str(), commandLine.data(), nullptr, nullptr, FALSE, flags, nullptr, directory,
                               &startup, &information))
        << "cannot start " << file.string() << ", error " << GetLastError();
    const UniqueHandle thread(information.hThread);
    return UniqueHandle(information.hProcess);
}

} // namespace

Program::Program(const std::filesystem::path& file, const std::wstring& arguments,
                 const std::filesystem::path& temporaryFolder, const std::filesystem::path& directory, DWORD flags) {
    const std::wstring commandLine = L'"' + file.wstring() + L"\" " + arguments;
    const wchar_t* const where = directory.empty() ? nullptr : directory.c_str();
    if (temporaryFolder.empty()) {
        process_ = Start(file, commandLine, where, flags);
        return;
    }
    const ScopedVariable tmp(L"TMP", temporaryFolder.wstring());
    process_ = Start(file, commandLine, where, flags);
}

Program::~Program() {
    if (process_ && IsRunning()) {
        TerminateProcess(process_.Get(), 1);
        WaitForSingleObject(process_.Get(), INFINITE);
    }
}

DWORD Program::ExitCode() const {
    const Watchdog::Waiting waiting("the end of a program that the test started");
    WaitForSingleObject(process_.Get(), INFINITE);
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeProcess(process_.Get(), &code));
    return code;
}

std::vector<DWORD> ProcessesNamed(const std::wstring& name) {
    std::vector<DWORD> ids;
    const UniqueHandle processes(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL found = Process32FirstW(processes.Get(), &entry); found;
         found = Process32NextW(processes.Get(), &entry)) {
        if (entry.szExeFile == name)
            ids.push_back(entry.th32ProcessID);
    }
    return ids;
}

HWND FindWindowOf(const Program& program, const wchar_t* windowClass) {
    HWND window = nullptr;
    while ((window = FindWindowExW(nullptr, window, windowClass, nullptr)) != nullptr) {
        DWORD owner = 0;
        GetWindowThreadProcessId(window, &owner);
        if (owner == program.Id())
            break;
    }
    return window;
}

HWND AwaitWindow(const Program& program, const wchar_t* windowClass) {
    HWND window = nullptr;
    WaitUntil("a window of a program that the test started", [&] {
        window = FindWindowOf(program, windowClass);
        return window != nullptr;
    });
    return window;
}
