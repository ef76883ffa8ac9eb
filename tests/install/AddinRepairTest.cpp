#include "install/AddinRepair.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"

#include <gtest/gtest.h>

namespace {

class AddinRepair : public LoggedRegistry {};

constexpr wchar_t Items14[] = L"Software\\Microsoft\\Office\\14.0\\OneNote\\Resiliency\\DisabledItems";
constexpr wchar_t Items15[] = L"Software\\Microsoft\\Office\\15.0\\OneNote\\Resiliency\\DisabledItems";
constexpr wchar_t Items16[] = L"Software\\Microsoft\\Office\\16.0\\OneNote\\Resiliency\\DisabledItems";
constexpr wchar_t Security14[] = L"Software\\Microsoft\\Office\\14.0\\OneNote\\Security";
constexpr wchar_t Security15[] = L"Software\\Microsoft\\Office\\15.0\\OneNote\\Security";
constexpr wchar_t Security16[] = L"Software\\Microsoft\\Office\\16.0\\OneNote\\Security";
constexpr wchar_t Addin[] = L"Software\\Microsoft\\Office\\OneNote\\AddIns\\Vellumkit.Addin";

/// The log of seven deletions, each followed by `outcome` unless that is null.
Entries SevenDeletions(const wchar_t* itemsOutcome, const wchar_t* valueOutcome) {
    Entries entries;
    for (const wchar_t* key : {Items14, Items15, Items16}) {
        entries.push_back(std::wstring(L"Deleting registry key: HKCU\\") + key + L"\\@");
        if (itemsOutcome != nullptr)
            entries.emplace_back(itemsOutcome);
    }
    const std::pair<const wchar_t*, const wchar_t*> values[] = {{Security14, L"DisableAllAddins"},
                                                                {Security15, L"DisableAllAddins"},
                                                                {Security16, L"DisableAllAddins"},
                                                                {Addin, L"LoadBehavior"}};
    for (const auto& [key, value] : values) {
        entries.push_back(std::wstring(L"Deleting registry key: HKCU\\") + key + L"\\" + value);
        if (valueOutcome != nullptr)
            entries.emplace_back(valueOutcome);
    }
    return entries;
}

} // namespace

TEST_F(AddinRepair, LogsKeyNotFoundSevenTimesForAUserWithoutOffice) {
    RepairAddinSettings();
    EXPECT_EQ(Logged(), SevenDeletions(L"Key not found", L"Key not found"));
}

TEST_F(AddinRepair, RemovesWhatDisablesTheAddinAndNothingElse) {
    for (const wchar_t* key : {Items14, Items15, Items16})
        SetDword((std::wstring(key) + L"\\Deeper").c_str(), L"Item", 1);
    for (const wchar_t* key : {Security14, Security15, Security16}) {
        SetDword(key, L"DisableAllAddins", 1);
        SetDword(key, L"Other", 2);
    }
    SetDword(Addin, L"LoadBehavior", 2);
    SetValue(Addin, L"FriendlyName", REG_SZ, Bytes(L"Vellumkit"));
    RepairAddinSettings();
    for (const wchar_t* key : {Items14, Items15, Items16})
        EXPECT_FALSE(KeyExists(key));
    for (const wchar_t* key : {Security14, Security15, Security16}) {
        EXPECT_EQ(GetValue(key, L"DisableAllAddins"), std::nullopt);
        EXPECT_EQ(GetValue(key, L"Other"), Dword(2));
    }
    EXPECT_EQ(GetValue(Addin, L"LoadBehavior"), std::nullopt);
    EXPECT_NE(GetValue(Addin, L"FriendlyName"), std::nullopt);
    EXPECT_TRUE(KeyExists(L"Software\\Microsoft\\Office\\16.0\\OneNote\\Resiliency"));
    EXPECT_EQ(Logged(), SevenDeletions(nullptr, nullptr));
}

TEST_F(AddinRepair, LogsValueNotFoundUnderKeysThatLackTheValue) {
    for (const wchar_t* key : {Security14, Security15, Security16, Addin})
        SetDword(key, L"Other", 1);
    RepairAddinSettings();
    EXPECT_EQ(Logged(), SevenDeletions(L"Key not found", L"Value not found"));
}

TEST_F(AddinRepair, GoesOnAfterDeletionsThatFail) {
    const ImportPatch<decltype(RegDeleteTreeW)> tree("RegDeleteTreeW",
                                                     [](HKEY, LPCWSTR) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    const ImportPatch<decltype(RegOpenKeyExW)> open(
        "RegOpenKeyExW", [](HKEY, LPCWSTR, DWORD, REGSAM, PHKEY) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    RepairAddinSettings();
    EXPECT_EQ(Logged(), SevenDeletions(L"ERROR: ", L"ERROR: "));
}
