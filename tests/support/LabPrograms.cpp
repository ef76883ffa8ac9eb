#include "tests/support/LabPrograms.h"

#include "tests/support/TestFolder.h"

std::filesystem::path ElevatedInstaller() {
    return ProgramFolder().parent_path() / "lab/elevated-installer.exe";
}

std::filesystem::path Datebookery() {
    return ProgramFolder().parent_path() / "lab/datebk.exe";
}

TargetProgram::TargetProgram(const std::filesystem::path& file)
    : program_(file), window_(AwaitWindow(program_, L"LabDatebookery")) {}
