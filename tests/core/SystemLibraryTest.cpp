#include "core/SystemLibrary.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/TestFolder.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

fs::path SystemFolder() {
    std::array<wchar_t, MAX_PATH> path{};
    GetSystemDirectoryW(path.data(), MAX_PATH);
    return path.data();
}

fs::path PathOf(HMODULE library) {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(library, path.data(), MAX_PATH);
    return path.data();
}

/// Version 5 of the common controls has no task dialog.
bool IsVersion6(HMODULE commonControls) {
    return GetProcAddress(commonControls, "TaskDialogIndirect") != nullptr;
}

/// On a Windows 7 without the update that brought the flags of the search.
class SystemLibraryWithoutTheUpdate : public testing::Test {
protected:
    SystemLibraryWithoutTheUpdate() { Loaded.clear(); }

    struct Call {
        std::wstring name;
        DWORD flags;
    };
    static inline std::vector<Call> Loaded;

private:
    static inline auto* const Load = ImportedNow<decltype(LoadLibraryExW)>("LoadLibraryExW");

    ImportPatch<decltype(LoadLibraryExW)> load_{"LoadLibraryExW",
                                                [](LPCWSTR name, HANDLE file, DWORD flags) -> HMODULE {
                                                    if (flags == LOAD_LIBRARY_SEARCH_SYSTEM32) {
                                                        SetLastError(ERROR_INVALID_PARAMETER);
                                                        return nullptr;
                                                    }
                                                    Loaded.push_back({name, flags});
                                                    return Load(name, file, flags);
                                                }};
};

} // namespace

TEST(SystemLibrary, ComesFromTheSystemFolder) {
    const HMODULE library = LoadSystemLibrary(L"msvfw32.dll");
    ASSERT_NE(library, nullptr);
    EXPECT_TRUE(fs::equivalent(PathOf(library).parent_path(), SystemFolder())) << PathOf(library);
}

TEST(SystemLibrary, IsNotSearchedForInTheCurrentDirectory) {
    const TestFolder folder;
    const fs::path before = fs::current_path();
    fs::copy_file(SystemFolder() / "version.dll", folder.Path() / "planted.dll");
    fs::current_path(folder.Path());
    const HMODULE library = LoadSystemLibrary(L"planted.dll");
    const DWORD error = GetLastError();
    const HMODULE control = LoadLibraryW(L"planted.dll");
    fs::current_path(before);
    EXPECT_EQ(library, nullptr);
    EXPECT_EQ(error, static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
    EXPECT_NE(control, nullptr) << "it is not there at all";
    FreeLibrary(control);
}

TEST(SystemLibrary, IsTheOneThatTheManifestNames) {
    EXPECT_TRUE(IsVersion6(LoadSystemLibrary(L"comctl32.dll")));
}

TEST_F(SystemLibraryWithoutTheUpdate, IsLoadedByItsPath) {
    EXPECT_EQ(LoadSystemLibrary(L"msvfw32.dll"), GetModuleHandleW(L"msvfw32.dll"));
    ASSERT_EQ(Loaded.size(), 1U);
    EXPECT_EQ(fs::path(Loaded[0].name), SystemFolder() / "msvfw32.dll");
    EXPECT_EQ(Loaded[0].flags, static_cast<DWORD>(LOAD_WITH_ALTERED_SEARCH_PATH));
}

TEST_F(SystemLibraryWithoutTheUpdate, IsTheOneThatTheManifestNames) {
    EXPECT_TRUE(IsVersion6(LoadSystemLibrary(L"comctl32.dll")));
    ASSERT_EQ(Loaded.size(), 1U);
    EXPECT_EQ(Loaded[0].name, L"comctl32.dll");
    EXPECT_EQ(Loaded[0].flags, 0U);
}

TEST_F(SystemLibraryWithoutTheUpdate, IsMissingWhereTheSystemFolderIsNotKnown) {
    const ImportPatch<decltype(GetSystemDirectoryW)> folder("GetSystemDirectoryW",
                                                            [](LPWSTR, UINT) -> UINT { return 0; });
    EXPECT_EQ(LoadSystemLibrary(L"msvfw32.dll"), nullptr);
    EXPECT_TRUE(Loaded.empty()) << "not by its bare name";
}

TEST_F(SystemLibraryWithoutTheUpdate, IsMissingWhereItsPathIsTooLong) {
    static constexpr std::wstring_view Name = L"\\msvfw32.dll";
    static std::size_t length = 0;
    const ImportPatch<decltype(GetSystemDirectoryW)> folder("GetSystemDirectoryW", [](LPWSTR path, UINT) -> UINT {
        std::fill_n(path, length, L'x');
        return static_cast<UINT>(length);
    });
    length = MAX_PATH - 1 - Name.size();
    EXPECT_EQ(LoadSystemLibrary(&Name[1]), nullptr);
    ASSERT_EQ(Loaded.size(), 1U);
    EXPECT_EQ(Loaded[0].name, std::wstring(length, L'x').append(Name));
    ++length;
    EXPECT_EQ(LoadSystemLibrary(&Name[1]), nullptr);
    EXPECT_EQ(Loaded.size(), 1U);
}
