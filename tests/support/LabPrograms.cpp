#include "tests/support/LabPrograms.h"

#include "tests/support/TestFolder.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t AutomationClass[] = L"CLSID\\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}";

std::wstring NewEventName() {
    static int count = 0;
    return L"VellumkitLab" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
}

} // namespace

std::filesystem::path ElevatedInstaller() {
    return ProgramFolder().parent_path() / "lab/elevated-installer.exe";
}

RegisteredAutomation::RegisteredAutomation() {
    const std::wstring file = (ProgramFolder() / "onenote-server.dll").wstring();
    const auto size = static_cast<DWORD>((file.size() + 1) * sizeof(wchar_t));
    const std::wstring server = std::wstring(AutomationClass) + L"\\InprocServer32";
    EXPECT_EQ(RegSetKeyValueW(HKEY_CLASSES_ROOT, server.c_str(), nullptr, REG_SZ, file.c_str(), size), ERROR_SUCCESS);
}

void RegisteredAutomation::Remove() {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, AutomationClass);
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
