#include "app/DpiAwareness.h"

#include "tests/support/ImportPatch.h"

#include <shellscalingapi.h>

#include <gtest/gtest.h>

namespace {

/// Stands before the calls that set the awareness, which a process can make only once.
class DpiAwareness : public testing::Test {
protected:
    void SetUp() override { Calls.clear(); }

    static inline std::string Calls;

private:
    ImportPatch<decltype(SetProcessDPIAware)> old_{"SetProcessDPIAware", []() -> BOOL {
                                                       Calls += "SetProcessDPIAware";
                                                       return FALSE;
                                                   }};
};

} // namespace

TEST_F(DpiAwareness, IsSystemAwareness) {
    static const auto Set = [](PROCESS_DPI_AWARENESS awareness) -> HRESULT {
        Calls += "SetProcessDpiAwareness(" + std::to_string(awareness) + ")";
        return E_ACCESSDENIED;
    };
    const ImportPatch<decltype(GetProcAddress)> get("GetProcAddress", [](HMODULE module, LPCSTR name) -> FARPROC {
        EXPECT_EQ(module, GetModuleHandleW(L"shcore.dll"));
        EXPECT_STREQ(name, "SetProcessDpiAwareness");
        HRESULT(WINAPI * function)(PROCESS_DPI_AWARENESS) = Set;
        return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
    });
    SetDpiAwareness();
    EXPECT_EQ(Calls, "SetProcessDpiAwareness(1)");
}

TEST_F(DpiAwareness, IsSetTheOldWayWhereTheFunctionIsMissing) {
    const ImportPatch<decltype(GetProcAddress)> get("GetProcAddress",
                                                    [](HMODULE, LPCSTR) -> FARPROC { return nullptr; });
    SetDpiAwareness();
    EXPECT_EQ(Calls, "SetProcessDPIAware");
}

TEST_F(DpiAwareness, IsLeftAloneWhereTheLibraryIsMissing) {
    const ImportPatch<decltype(LoadLibraryExW)> load("LoadLibraryExW", [](LPCWSTR name, HANDLE, DWORD) -> HMODULE {
        EXPECT_STREQ(name, L"shcore.dll");
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    });
    SetDpiAwareness();
    EXPECT_EQ(Calls, "");
}
