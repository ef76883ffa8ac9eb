#include "tests/support/LabPrograms.h"

#include "tests/support/TestFolder.h"

namespace {

std::wstring NewEventName() {
    static int count = 0;
    return L"VellumkitLab" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
}

} // namespace

std::filesystem::path ElevatedInstaller() {
    return ProgramFolder().parent_path() / "lab/elevated-installer.exe";
}

TargetProgram::TargetProgram(const std::filesystem::path& file, const std::wstring& options)
    : endName_(NewEventName()), end_(CreateEventW(nullptr, TRUE, FALSE, endName_.c_str())),
      program_(file, options + L" /until " + endName_), window_(AwaitWindow(program_, L"LabTargetProgram")) {}

std::filesystem::path TargetProgram::OneNote() {
    return ProgramFolder().parent_path() / "lab/onenote.exe";
}

std::filesystem::path TargetProgram::Datebookery() {
    return ProgramFolder().parent_path() / "lab/datebk.exe";
}
