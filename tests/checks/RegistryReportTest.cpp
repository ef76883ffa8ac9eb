#include "checks/RegistryReport.h"

#include "tests/support/Registry.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

namespace {

class RegistryReport : public LoggedRegistry {};

} // namespace

TEST_F(RegistryReport, HasATitleALineForEachEntryAndAnEmptyEntry) {
    SetDword(L"Key", L"Number", 2688);
    SetValue(L"Key", nullptr, REG_SZ, Bytes(L"text"));
    SetValue(L"Key", L"Path", REG_EXPAND_SZ, Bytes(L"%TEMP%"));
    SetValue(L"Key", L"Many", REG_MULTI_SZ, Bytes(std::wstring(L"a\0\0", 3)));
    SetValue(L"Key", L"Bytes", REG_BINARY, {1, 2});
    std::vector<RegistryEntry> entries;
    for (const wchar_t* name :
         {L"Number", static_cast<const wchar_t*>(nullptr), L"Path", L"Many", L"Bytes", L"Missing"})
        entries.push_back({.root = HKEY_CURRENT_USER, .subkey = L"Key", .valueName = name});
    entries.push_back({.root = HKEY_CLASSES_ROOT, .subkey = L"Missing"});
    WriteRegistryReport(L"Title", entries);
    EXPECT_EQ(Logged(), (Entries{
                            L"Title",
                            L"    HKCU\\Key\\Number - 2688 (DWORD)",
                            L"    HKCU\\Key\\@ - text (String)",
                            L"    HKCU\\Key\\Path - %TEMP% (String expand)",
                            L"    HKCU\\Key\\Many - <no-value>",
                            L"    HKCU\\Key\\Bytes - Not found",
                            L"    HKCU\\Key\\Missing - Not found",
                            L"    HKCR\\Missing\\@ - Not found",
                            L"",
                        }));
    EXPECT_EQ(GetValue(L"Key", L"Number"), Dword(2688));
}

TEST_F(RegistryReport, WithoutEntriesIsTheTitleAndTheEmptyEntry) {
    WriteRegistryReport(L"Title", {});
    EXPECT_EQ(Logged(), (Entries{L"Title", L""}));
}

TEST_F(RegistryReport, ShowsTheNulThatAStringWasStoredWith) {
    SetValue(L"Key", L"Text", REG_SZ, Bytes(std::wstring(L"text\0", 5)));
    WriteRegistryReport(L"Title", {{.root = HKEY_CURRENT_USER, .subkey = L"Key", .valueName = L"Text"}});
    EXPECT_EQ(Logged()[1], L"    HKCU\\Key\\Text - text\0 (String)"s);
}
