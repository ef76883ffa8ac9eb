#include "tests/support/TestFolder.h"

#include <array>
#include <string>

namespace fs = std::filesystem;

TestFolder::TestFolder(const std::wstring& suffix) {
    static int count = 0;
    std::array<wchar_t, MAX_PATH + 1> temporary{};
    GetTempPathW(static_cast<DWORD>(temporary.size()), temporary.data());
    path_ = fs::path(temporary.data()) /
            (L"vellumkit-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++count) + suffix);
    fs::remove_all(path_); // what a test program that was ended left behind
    fs::create_directories(path_);
}

TestFolder::~TestFolder() {
    std::error_code ignored;
    // What a test marked read-only would stay.
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path_, ignored))
        SetFileAttributesW(entry.path().c_str(), FILE_ATTRIBUTE_NORMAL);
    fs::remove_all(path_, ignored);
}

fs::path ProgramFolder() {
    std::array<wchar_t, 1024> program{};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    return fs::path(program.data()).parent_path();
}
