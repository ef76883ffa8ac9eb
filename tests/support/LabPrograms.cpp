#include "tests/support/LabPrograms.h"

#include "tests/support/TestFolder.h"
#include "tests/support/Watchdog.h"

namespace {

std::wstring NewEventName() {
    static int count = 0;
    return L"VellumkitLab" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
}

HWND AwaitWindow(const Program& program) {
    const Watchdog::Waiting waiting("the window of a target program");
    for (;; Sleep(20)) {
        HWND window = nullptr;
        while ((window = FindWindowExW(nullptr, window, L"LabTargetProgram", nullptr)) != nullptr) {
            DWORD owner = 0;
            GetWindowThreadProcessId(window, &owner);
            if (owner == program.Id())
                return window;
        }
    }
}

} // namespace

TargetProgram::TargetProgram(const std::filesystem::path& file, const std::wstring& options)
    : endName_(NewEventName()), end_(CreateEventW(nullptr, TRUE, FALSE, endName_.c_str())),
      program_(file, options + L" /until " + endName_), window_(AwaitWindow(program_)) {}

std::filesystem::path TargetProgram::OneNote() {
    return ProgramFolder().parent_path() / "lab/onenote.exe";
}

std::filesystem::path TargetProgram::Datebookery() {
    return ProgramFolder().parent_path() / "lab/datebk.exe";
}
