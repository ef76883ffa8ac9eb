#include "app/LibrarySearch.h"

#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <string>

namespace {

/// Stands before the calls, whose effect would outlast the test. What they do is seen in LibraryPlantingTest.cpp.
class LibrarySearch : public testing::Test {
protected:
    LibrarySearch() { Calls.clear(); }

    static BOOL WINAPI SetDirectories(DWORD directories) {
        Calls += "SetDefaultDllDirectories(" + std::to_string(directories) + ") ";
        return FALSE;
    }

    static inline std::string Calls;

private:
    ImportPatch<decltype(SetDllDirectoryW)> directory_{"SetDllDirectoryW", [](LPCWSTR folder) -> BOOL {
                                                           EXPECT_STREQ(folder, L"");
                                                           Calls += "SetDllDirectory";
                                                           return FALSE;
                                                       }};
};

} // namespace

TEST_F(LibrarySearch, IsLimitedToTheSystemFolder) {
    const ImportPatch<decltype(GetProcAddress)> get("GetProcAddress", [](HMODULE module, LPCSTR name) -> FARPROC {
        EXPECT_EQ(module, GetModuleHandleW(L"kernel32.dll"));
        EXPECT_STREQ(name, "SetDefaultDllDirectories");
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(SetDirectories));
    });
    LimitLibrarySearch();
    EXPECT_EQ(Calls, "SetDefaultDllDirectories(2048) SetDllDirectory");
}

TEST_F(LibrarySearch, LeavesOutTheCurrentDirectoryWhereItCannotBeLimited) {
    const ImportPatch<decltype(GetProcAddress)> get("GetProcAddress",
                                                    [](HMODULE, LPCSTR) -> FARPROC { return nullptr; });
    LimitLibrarySearch();
    EXPECT_EQ(Calls, "SetDllDirectory");
}
