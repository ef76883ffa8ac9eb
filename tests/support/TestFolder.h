#pragma once

#include <windows.h>

#include <filesystem>

/// A new empty folder below the user's temporary folder, removed with all it holds.
class TestFolder {
public:
    /// `suffix` becomes the end of its name.
    explicit TestFolder(const std::wstring& suffix = L"");
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;
    ~TestFolder();

    const std::filesystem::path& Path() const { return path_; }

private:
    std::filesystem::path path_;
};

/// Where the tests' own programs lie, and the programs they test beside: out/release/tests, say.
std::filesystem::path ProgramFolder();
