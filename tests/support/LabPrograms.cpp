#include "tests/support/LabPrograms.h"

#include "tests/support/TestFolder.h"

std::filesystem::path LabFolder() {
    return ProgramFolder().parent_path() / "lab";
}

std::filesystem::path ElevatedInstaller() {
    return LabFolder() / "elevated-installer.exe";
}

std::filesystem::path Datebookery() {
    return LabFolder() / "datebk.exe";
}

TargetProgram::TargetProgram(const std::filesystem::path& file)
    : program_(file), window_(AwaitWindow(program_, L"LabDatebookery")) {}
