#include "checks/ComRegistrationReport.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

class ComRegistrationReport : public LoggedRegistry {
protected:
    /// The log with ␀ for every NUL.
    Entries Logged() const {
        Entries entries = LoggedRegistry::Logged();
        for (std::wstring& entry : entries)
            std::ranges::replace(entry, L'\0', L'␀');
        return entries;
    }
};

/// The value "Version" of an interface's key "TypeLib" in one view; REG_NONE for none.
struct Version {
    DWORD type = REG_NONE;
    std::wstring data;
};

struct TypeLibVersion {
    const char* name;
    Version native;
    Version wow64;
    const wchar_t* result;
};

class InterfaceVersion : public ComRegistrationReport, public testing::WithParamInterface<TypeLibVersion> {};

void SetVersion(const wchar_t* subkey, const Version& version) {
    if (version.type != REG_NONE)
        SetValueOf(HKEY_CLASSES_ROOT, subkey, L"Version", version.type, Bytes(version.data));
}

const auto NameOf = [](const auto& item) { return item.param.name; };

} // namespace

TEST_F(ComRegistrationReport, ShowsAProgIdAndItsVersionsInTheOrderGiven) {
    RegisterText(L"Some.Program", nullptr, L"a");
    RegisterText(L"Some.Program\\CLSID", nullptr, L"b");
    RegisterText(L"Some.Program\\CurVer", nullptr, L"c");
    RegisterText(L"Some.Program.15", nullptr, L"d");
    RegisterText(L"Some.Program.15\\CLSID", nullptr, L"e");
    RegisterText(L"Wow6432Node\\Some.Program.14", nullptr, L"not looked at");
    ReportProgId(L"Some.Program", {L"15", L"14"});
    EXPECT_EQ(Logged(), (Entries{
                            L"ProgId for Some.Program",
                            L"    HKCR\\Some.Program\\@ - a␀ (String)",
                            L"    HKCR\\Some.Program\\CLSID\\@ - b␀ (String)",
                            L"    HKCR\\Some.Program\\CurVer\\@ - c␀ (String)",
                            L"    HKCR\\Some.Program.15\\@ - d␀ (String)",
                            L"    HKCR\\Some.Program.15\\CLSID\\@ - e␀ (String)",
                            L"    HKCR\\Some.Program.14\\@ - Not found",
                            L"    HKCR\\Some.Program.14\\CLSID\\@ - Not found",
                            L"",
                        }));
}

TEST_F(ComRegistrationReport, OfAProgIdWithoutVersionsHasThreeEntries) {
    ReportProgId(L"Some.Program", {});
    EXPECT_EQ(Logged(), (Entries{
                            L"ProgId for Some.Program",
                            L"    HKCR\\Some.Program\\@ - Not found",
                            L"    HKCR\\Some.Program\\CLSID\\@ - Not found",
                            L"    HKCR\\Some.Program\\CurVer\\@ - Not found",
                            L"",
                        }));
}

TEST_F(ComRegistrationReport, ShowsAClassInBothViews) {
    for (const std::wstring view : {L"", L"Wow6432Node\\"}) {
        const std::wstring key = view + L"CLSID\\{C}";
        RegisterText(key, nullptr, view + L"a");
        RegisterText(key + L"\\InprocServer32", nullptr, view + L"b");
        RegisterText(key + L"\\InprocServer32", L"ThreadingModel", view + L"c");
        RegisterText(key + L"\\LocalServer32", nullptr, view + L"d");
        RegisterText(key + L"\\ProgID", nullptr, view + L"e");
        RegisterText(key + L"\\TypeLib", nullptr, view + L"f");
    }
    ReportClsid(L"Some.Class", L"{C}");
    EXPECT_EQ(Logged(),
              (Entries{
                  L"CLSID for Some.Class",
                  L"    HKCR\\CLSID\\{C}\\@ - a␀ (String)",
                  L"    HKCR\\CLSID\\{C}\\InprocServer32\\@ - b␀ (String)",
                  L"    HKCR\\CLSID\\{C}\\InprocServer32\\ThreadingModel - c␀ (String)",
                  L"    HKCR\\CLSID\\{C}\\LocalServer32\\@ - d␀ (String)",
                  L"    HKCR\\CLSID\\{C}\\ProgID\\@ - e␀ (String)",
                  L"    HKCR\\CLSID\\{C}\\TypeLib\\@ - f␀ (String)",
                  L"    HKCR\\Wow6432Node\\CLSID\\{C}\\@ - Wow6432Node\\a␀ (String)",
                  L"    HKCR\\Wow6432Node\\CLSID\\{C}\\InprocServer32\\@ - Wow6432Node\\b␀ (String)",
                  L"    HKCR\\Wow6432Node\\CLSID\\{C}\\InprocServer32\\ThreadingModel - Wow6432Node\\c␀ (String)",
                  L"    HKCR\\Wow6432Node\\CLSID\\{C}\\LocalServer32\\@ - Wow6432Node\\d␀ (String)",
                  L"    HKCR\\Wow6432Node\\CLSID\\{C}\\ProgID\\@ - Wow6432Node\\e␀ (String)",
                  L"    HKCR\\Wow6432Node\\CLSID\\{C}\\TypeLib\\@ - Wow6432Node\\f␀ (String)",
                  L"",
              }));
}

TEST_F(ComRegistrationReport, ShowsAnInterfaceInBothViews) {
    for (const std::wstring view : {L"", L"Wow6432Node\\"}) {
        const std::wstring key = view + L"Interface\\{I}";
        RegisterText(key, nullptr, view + L"a");
        RegisterText(key + L"\\ProxyStubClsid", nullptr, view + L"b");
        RegisterText(key + L"\\ProxyStubClsid32", nullptr, view + L"c");
        RegisterText(key + L"\\TypeLib", nullptr, view + L"d");
        RegisterText(key + L"\\TypeLib", L"Version", view + L"e");
    }
    EXPECT_EQ(ReportInterface(L"ISome", L"{I}"), L"e");
    EXPECT_EQ(Logged(), (Entries{
                            L"IID for ISome",
                            L"    HKCR\\Interface\\{I}\\@ - a␀ (String)",
                            L"    HKCR\\Interface\\{I}\\ProxyStubClsid\\@ - b␀ (String)",
                            L"    HKCR\\Interface\\{I}\\ProxyStubClsid32\\@ - c␀ (String)",
                            L"    HKCR\\Interface\\{I}\\TypeLib\\@ - d␀ (String)",
                            L"    HKCR\\Interface\\{I}\\TypeLib\\Version - e␀ (String)",
                            L"    HKCR\\Wow6432Node\\Interface\\{I}\\@ - Wow6432Node\\a␀ (String)",
                            L"    HKCR\\Wow6432Node\\Interface\\{I}\\ProxyStubClsid\\@ - Wow6432Node\\b␀ (String)",
                            L"    HKCR\\Wow6432Node\\Interface\\{I}\\ProxyStubClsid32\\@ - Wow6432Node\\c␀ (String)",
                            L"    HKCR\\Wow6432Node\\Interface\\{I}\\TypeLib\\@ - Wow6432Node\\d␀ (String)",
                            L"    HKCR\\Wow6432Node\\Interface\\{I}\\TypeLib\\Version - Wow6432Node\\e␀ (String)",
                            L"",
                        }));
}

TEST_F(ComRegistrationReport, OfWhatIsNotRegisteredSaysNotFoundInEveryEntryAndCreatesNothing) {
    ReportProgId(L"Some.Program", {L"14"});
    ReportClsid(L"Some.Class", L"{C}");
    EXPECT_EQ(ReportInterface(L"ISome", L"{I}"), L"");
    const Entries log = Logged();
    ASSERT_EQ(log.size(), 7U + 14 + 12);
    for (const std::size_t title : {0U, 7U, 21U}) {
        EXPECT_EQ(log[title].find(L"HKCR"), std::wstring::npos);
        EXPECT_EQ(title != 0 ? log[title - 1] : log.back(), L"");
    }
    EXPECT_EQ(std::ranges::count_if(log, [](const std::wstring& entry) { return entry.ends_with(L" - Not found"); }),
              5 + 12 + 10);
    DWORD keys = 0;
    EXPECT_EQ(RegQueryInfoKeyW(HKEY_CLASSES_ROOT, nullptr, nullptr, nullptr, &keys, nullptr, nullptr, nullptr, nullptr,
                               nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(keys, 0U);
}

TEST_F(ComRegistrationReport, SaysNotFoundOfWhatItMayNotRead) {
    RegisterText(L"Interface\\{I}\\TypeLib", L"Version", L"1.1");
    const ImportPatch<decltype(RegOpenKeyExW)> denied("RegOpenKeyExW", [](HKEY, LPCWSTR, DWORD, REGSAM access, PHKEY) {
        EXPECT_EQ(access, static_cast<REGSAM>(KEY_QUERY_VALUE));
        return LSTATUS{ERROR_ACCESS_DENIED};
    });
    EXPECT_EQ(ReportInterface(L"ISome", L"{I}"), L"");
    EXPECT_EQ(Logged()[5], L"    HKCR\\Interface\\{I}\\TypeLib\\Version - Not found");
}

INSTANTIATE_TEST_SUITE_P(
    , InterfaceVersion,
    testing::Values(TypeLibVersion{"OfNeitherView", {}, {}, L""},
                    TypeLibVersion{"OfTheNativeView", {REG_SZ, L"1.1\0"s}, {}, L"1.1"},
                    TypeLibVersion{"OfThe32BitView", {}, {REG_SZ, L"1.0\0"s}, L"1.0"},
                    TypeLibVersion{"OfTheNativeViewWhenBothHaveOne", {REG_SZ, L"1.1\0"s}, {REG_SZ, L"1.0\0"s}, L"1.1"},
                    TypeLibVersion{"Unterminated", {REG_SZ, L"1.1"}, {}, L"1.1"},
                    TypeLibVersion{"ThatIsExpandable", {REG_EXPAND_SZ, L"%X%\0"s}, {}, L"%X%"},
                    TypeLibVersion{"UpToItsFirstNul", {REG_SZ, L"1.1\0 and more\0"s}, {}, L"1.1"},
                    TypeLibVersion{"InTheFirstOfManyStrings",
                                   {REG_MULTI_SZ, L"1.1\0"
                                                  L"1.0\0\0"s},
                                   {},
                                   L"1.1"},
                    TypeLibVersion{"ThatIsEmptyBeforeThe32BitView", {REG_SZ, L"\0"s}, {REG_SZ, L"1.0\0"s}, L""},
                    TypeLibVersion{"ThatIsANumberBeforeThe32BitView", {REG_DWORD, L"\x1\0"s}, {REG_SZ, L"1.0\0"s}, L""},
                    TypeLibVersion{"OfThe32BitViewBehindBytes", {REG_BINARY, L"1.1"}, {REG_SZ, L"1.0\0"s}, L"1.0"}),
    NameOf);

TEST_P(InterfaceVersion, IsReturned) {
    RegisterText(L"Interface\\{I}\\TypeLib", nullptr, L"{L}");
    RegisterText(L"Wow6432Node\\Interface\\{I}\\TypeLib", nullptr, L"{L}");
    SetVersion(L"Interface\\{I}\\TypeLib", GetParam().native);
    SetVersion(L"Wow6432Node\\Interface\\{I}\\TypeLib", GetParam().wow64);
    EXPECT_EQ(ReportInterface(L"ISome", L"{I}"), GetParam().result);
    EXPECT_EQ(Logged()[4], L"    HKCR\\Interface\\{I}\\TypeLib\\@ - {L}␀ (String)");
    EXPECT_EQ(Logged()[9], L"    HKCR\\Wow6432Node\\Interface\\{I}\\TypeLib\\@ - {L}␀ (String)");
}
