#include "install/SecureProtocols.h"

#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"

#include <gtest/gtest.h>

namespace {

constexpr wchar_t Settings[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings";
constexpr wchar_t Line[] =
    L"    HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\SecureProtocols - ";

Entries Report(const wchar_t* value) {
    return {L"Internet Security Settings", std::wstring(Line) + value, L""};
}

Entries ReportAndThen(const wchar_t* value, std::initializer_list<std::wstring> then) {
    Entries entries = Report(value);
    entries.insert(entries.end(), then);
    return entries;
}

class SecureProtocols : public LoggedRegistry {};

struct Case {
    const char* name;
    DWORD before;
    const wchar_t* report;
    DWORD after;
    /// Null: nothing is changed.
    const wchar_t* update;
};

class SecureProtocolsOfADword : public SecureProtocols, public testing::WithParamInterface<Case> {};

HRESULT ThrownByUpdate() {
    return ThrownBy([] { UpdateSecureProtocols(Settings, true); });
}

} // namespace

TEST_P(SecureProtocolsOfADword, GetTheTlsBitsThatTheyLack) {
    const Case& item = GetParam();
    SetDword(Settings, L"SecureProtocols", item.before);
    UpdateSecureProtocols(Settings, true);
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(item.after));
    EXPECT_EQ(Logged(), item.update != nullptr ? ReportAndThen(item.report, {item.update}) : Report(item.report));
}

INSTANTIATE_TEST_SUITE_P(, SecureProtocolsOfADword,
                         testing::Values(Case{"AllThree", 0xA80, L"2688 (DWORD)", 0xA80, nullptr},
                                         Case{"AllThreeAndOthers", 0xAA8, L"2728 (DWORD)", 0xAA8, nullptr},
                                         Case{"Ssl3AndTls10", 0xA0, L"160 (DWORD)", 0xAA0, L"Updated to 2720"},
                                         Case{"Tls12Alone", 0x800, L"2048 (DWORD)", 0xA80, L"Updated to 2688"},
                                         Case{"None", 0, L"0 (DWORD)", 0xA80, L"Updated to 2688"},
                                         Case{"Tls13IsKept", 0x2800, L"10240 (DWORD)", 0x2A80, L"Updated to 10880"},
                                         Case{"TheHighestBitIsWrittenSigned", 0x80000000, L"2147483648 (DWORD)",
                                              0x80000A80, L"Updated to -2147480960"}),
                         [](const auto& item) { return item.param.name; });

TEST_F(SecureProtocols, AreCreatedWithTheirKey) {
    UpdateSecureProtocols(Settings, true);
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(0xA80));
    EXPECT_EQ(Logged(),
              ReportAndThen(L"Not found", {L"Creating registry key: HKCU\\Software\\Microsoft\\Windows\\"
                                           L"CurrentVersion\\Internet Settings\\SecureProtocols = 2688 (DWORD)",
                                           L"Updated to 2688"}));
}

TEST_F(SecureProtocols, AreCreatedSilentlyUnderAnExistingKey) {
    SetDword(Settings, L"Other", 1);
    UpdateSecureProtocols(Settings, true);
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(0xA80));
    EXPECT_EQ(Logged(), ReportAndThen(L"Not found", {L"Updated to 2688"}));
}

TEST_F(SecureProtocols, OfAnotherTypeBecomeADword) {
    SetValue(Settings, L"SecureProtocols", REG_SZ, Bytes(L"2688"));
    UpdateSecureProtocols(Settings, true);
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(0xA80));
    EXPECT_EQ(Logged(), ReportAndThen(L"2688 (String)", {L"Updated to 2688"}));
}

TEST_F(SecureProtocols, StoredAsBytesKeepTheirBits) {
    SetValue(Settings, L"SecureProtocols", REG_BINARY, {0x20, 0, 0, 0});
    UpdateSecureProtocols(Settings, true);
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(0xAA0));
    EXPECT_EQ(Logged(), ReportAndThen(L"Not found", {L"Updated to 2720"}));
}

TEST_F(SecureProtocols, StoredAsBytesBecomeADwordThoughTheyLackNoBit) {
    SetValue(Settings, L"SecureProtocols", REG_BINARY, {0xFF, 0xFF, 0xFF, 0xFF});
    UpdateSecureProtocols(Settings, true);
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(0xFFFFFFFF));
    EXPECT_EQ(Logged(), ReportAndThen(L"Not found", {L"Updated to -1"}));
}

TEST_F(SecureProtocols, AreOnlyReportedWithoutUpdate) {
    SetDword(Settings, L"SecureProtocols", 0x20);
    UpdateSecureProtocols(Settings, false);
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(0x20));
    EXPECT_EQ(Logged(), Report(L"32 (DWORD)"));
}

TEST_F(SecureProtocols, ThatAreMissingAreOnlyReportedWithoutUpdate) {
    UpdateSecureProtocols(Settings, false);
    EXPECT_FALSE(KeyExists(Settings));
    EXPECT_EQ(Logged(), Report(L"Not found"));
}

TEST_F(SecureProtocols, FailWhenTheKeyCanBeReadButNotWritten) {
    SetDword(Settings, L"SecureProtocols", 0x20);
    static const auto Original = ImportedNow<decltype(RegOpenKeyExW)>("RegOpenKeyExW");
    const ImportPatch<decltype(RegOpenKeyExW)> open(
        "RegOpenKeyExW", [](HKEY root, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY key) -> LSTATUS {
            EXPECT_EQ(options, 0U);
            return access == KEY_SET_VALUE ? ERROR_ACCESS_DENIED : Original(root, subkey, options, access, key);
        });
    EXPECT_EQ(ThrownByUpdate(), E_ACCESSDENIED);
    EXPECT_EQ(Logged(), Report(L"32 (DWORD)"));
    EXPECT_EQ(GetValue(Settings, L"SecureProtocols"), Dword(0x20));
}

TEST_F(SecureProtocols, FailWhenTheValueCannotBeSet) {
    SetDword(Settings, L"SecureProtocols", 0x20);
    const ImportPatch<decltype(RegSetValueExW)> set(
        "RegSetValueExW",
        [](HKEY, LPCWSTR, DWORD, DWORD, const BYTE*, DWORD) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_EQ(ThrownByUpdate(), E_ACCESSDENIED);
    EXPECT_EQ(Logged(), Report(L"32 (DWORD)"));
}

TEST_F(SecureProtocols, FailWhenTheKeyCannotBeCreated) {
    const ImportPatch<decltype(RegCreateKeyExW)> create("RegCreateKeyExW",
                                                        [](HKEY, LPCWSTR, DWORD, LPWSTR, DWORD, REGSAM,
                                                           LPSECURITY_ATTRIBUTES, PHKEY,
                                                           LPDWORD) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_EQ(ThrownByUpdate(), E_ACCESSDENIED);
}
