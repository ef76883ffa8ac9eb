#include "core/RegistryEntry.h"

#include "core/ComError.h"
#include "tests/support/ComErrors.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr wchar_t Subkey[] = L"Software\\Vellumkit";

class RegistryEntries : public LoggedRegistry {
protected:
    static RegistryEntry Entry(const wchar_t* valueName) {
        return {.root = HKEY_CURRENT_USER, .subkey = Subkey, .valueName = valueName};
    }
};

/// Counts the keys that are closed as long as it lives.
class ClosedKeys {
public:
    ClosedKeys() { Count = 0; }
    int Get() const { return Count; }

private:
    static inline int Count = 0;
    static inline decltype(RegCloseKey)* Original = ImportedNow<decltype(RegCloseKey)>("RegCloseKey");
    ImportPatch<decltype(RegCloseKey)> patch_{"RegCloseKey", [](HKEY key) {
                                                  ++Count;
                                                  return Original(key);
                                              }};
};

} // namespace

TEST(RootKeyNames, NameThreeRootsAndFallThroughToClassesRoot) {
    EXPECT_STREQ(RootKeyName(HKEY_CURRENT_USER), L"HKCU");
    EXPECT_STREQ(RootKeyName(HKEY_LOCAL_MACHINE), L"HKLM");
    EXPECT_STREQ(RootKeyName(HKEY_CLASSES_ROOT), L"HKCR");
    EXPECT_STREQ(RootKeyName(HKEY_USERS), L"HKCR");
}

TEST(RegistryTexts, PathNamesRootSubkeyAndValue) {
    RegistryEntry entry{.root = HKEY_CURRENT_USER,
                        .subkey = L"Software\\Microsoft\\Office\\16.0\\OneNote\\Security",
                        .valueName = L"DisableAllAddins"};
    EXPECT_EQ(entry.PathText(), L"HKCU\\Software\\Microsoft\\Office\\16.0\\OneNote\\Security\\DisableAllAddins");
    entry.valueName = nullptr;
    EXPECT_EQ(entry.PathText(), L"HKCU\\Software\\Microsoft\\Office\\16.0\\OneNote\\Security\\@");
    entry.root = HKEY_USERS;
    EXPECT_TRUE(entry.PathText().starts_with(L"HKCR\\"));
}

TEST(RegistryTexts, ValueIsFollowedByItsType) {
    RegistryEntry entry{.stringData = L"text", .dwordData = 4294967295};
    const std::pair<DWORD, const wchar_t*> texts[] = {
        {REG_SZ, L"text (String)"},         {REG_EXPAND_SZ, L"text (String expand)"},
        {REG_DWORD, L"4294967295 (DWORD)"}, {REG_NONE, L"<no-value>"},
        {REG_MULTI_SZ, L"<no-value>"},      {REG_BINARY, L"<no-value>"},
        {REG_QWORD, L"<no-value>"},
    };
    for (const auto& [type, text] : texts) {
        entry.type = type;
        EXPECT_EQ(entry.ValueText(), text) << type;
    }
}

TEST(RegistryRecords, AreEmptyWhenTheyAreNew) {
    const RegistryEntry entry;
    EXPECT_TRUE(entry.subkey.empty() && entry.stringData.empty());
    EXPECT_EQ(entry.valueName, nullptr);
    EXPECT_EQ(entry.dwordData, 0U);
    EXPECT_EQ(entry.type, static_cast<DWORD>(REG_NONE));
}

// Write

TEST_F(RegistryEntries, WriteOfTypeNoneCreatesTheKeyOnly) {
    Entry(L"Value").Write();
    EXPECT_TRUE(KeyExists(Subkey));
    EXPECT_EQ(GetValue(Subkey, L"Value"), std::nullopt);
    EXPECT_EQ(Logged(), Entries{L"Creating registry key: HKCU\\Software\\Vellumkit\\Value"});
}

TEST_F(RegistryEntries, WriteStoresAStringWithoutItsNul) {
    RegistryEntry entry = Entry(L"Value");
    entry.stringData = L"abc";
    for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}}) {
        entry.type = type;
        entry.Write();
        EXPECT_EQ(GetValue(Subkey, L"Value"), (StoredValue{type, Bytes(L"abc")})) << type;
    }
    EXPECT_EQ(Logged(), (Entries{L"Creating registry key: HKCU\\Software\\Vellumkit\\Value = abc (String)",
                                 L"Creating registry key: HKCU\\Software\\Vellumkit\\Value = abc (String expand)"}));
}

TEST_F(RegistryEntries, WriteStoresADword) {
    RegistryEntry entry = Entry(nullptr);
    entry.type = REG_DWORD;
    entry.dwordData = 2688;
    entry.Write();
    EXPECT_EQ(GetValue(Subkey, nullptr), Dword(2688));
    EXPECT_EQ(Logged(), Entries{L"Creating registry key: HKCU\\Software\\Vellumkit\\@ = 2688 (DWORD)"});
}

TEST_F(RegistryEntries, WriteOfAnyOtherTypeStoresNoData) {
    RegistryEntry entry = Entry(L"Value");
    entry.stringData = L"abc";
    entry.type = REG_MULTI_SZ;
    entry.Write();
    EXPECT_EQ(GetValue(Subkey, L"Value"), (StoredValue{REG_MULTI_SZ, {}}));
    EXPECT_EQ(Logged(), Entries{L"Creating registry key: HKCU\\Software\\Vellumkit\\Value = <no-value>"});
}

TEST_F(RegistryEntries, WriteThrowsWhenTheKeyCannotBeCreated) {
    const ImportPatch<decltype(RegCreateKeyExW)> create("RegCreateKeyExW",
                                                        [](HKEY, LPCWSTR, DWORD, LPWSTR, DWORD, REGSAM,
                                                           LPSECURITY_ATTRIBUTES, PHKEY,
                                                           LPDWORD) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_EQ(ThrownBy([] { Entry(L"Value").Write(); }), E_ACCESSDENIED);
    EXPECT_EQ(Logged(), Entries{L"Creating registry key: HKCU\\Software\\Vellumkit\\Value"});
}

TEST_F(RegistryEntries, WriteThrowsWhenTheValueCannotBeSetAndClosesTheKey) {
    const ClosedKeys closed;
    const ImportPatch<decltype(RegSetValueExW)> set(
        "RegSetValueExW",
        [](HKEY, LPCWSTR, DWORD, DWORD, const BYTE*, DWORD) -> LSTATUS { return ERROR_REGISTRY_CORRUPT; });
    RegistryEntry entry = Entry(L"Value");
    entry.type = REG_DWORD;
    EXPECT_EQ(ThrownBy([&] { entry.Write(); }), HRESULT_FROM_WIN32(ERROR_REGISTRY_CORRUPT));
    EXPECT_EQ(Logged(), Entries{L"Creating registry key: HKCU\\Software\\Vellumkit\\Value = 0 (DWORD)"});
    EXPECT_EQ(closed.Get(), 1);
}

TEST_F(RegistryEntries, WriteAsksForALastingKeyWithWriteAccessAndNoView) {
    const auto refuse = [](HKEY root, LPCWSTR subkey, DWORD reserved, LPWSTR className, DWORD options, REGSAM access,
                           LPSECURITY_ATTRIBUTES security, PHKEY, LPDWORD disposition) -> LSTATUS {
        EXPECT_EQ(root, HKEY_CURRENT_USER);
        EXPECT_STREQ(subkey, Subkey);
        EXPECT_EQ(reserved, 0U);
        EXPECT_EQ(className, nullptr);
        EXPECT_EQ(options, 0U);
        EXPECT_EQ(access, 0x20006U);
        EXPECT_EQ(security, nullptr);
        EXPECT_EQ(disposition, nullptr);
        return ERROR_ACCESS_DENIED;
    };
    const ImportPatch<decltype(RegCreateKeyExW)> create("RegCreateKeyExW", refuse);
    EXPECT_EQ(ThrownBy([] { Entry(L"Value").Write(); }), E_ACCESSDENIED);
}

// Read

TEST_F(RegistryEntries, ReadOfADwordLeavesTheStringAlone) {
    SetDword(Subkey, L"Value", 2688);
    RegistryEntry entry = Entry(L"Value");
    entry.stringData = L"untouched";
    EXPECT_TRUE(entry.Read());
    EXPECT_EQ(entry.type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(entry.dwordData, 2688U);
    EXPECT_EQ(entry.stringData, L"untouched");
}

TEST_F(RegistryEntries, ReadOfADwordOfAnotherSizeStillSucceeds) {
    SetValue(Subkey, L"Value", REG_DWORD, {1, 2, 3, 4, 5, 6, 7, 8});
    RegistryEntry entry = Entry(L"Value");
    EXPECT_TRUE(entry.Read());
    SetValue(Subkey, L"Value", REG_DWORD, {7, 1});
    EXPECT_TRUE(entry.Read());
    EXPECT_EQ(entry.dwordData & 0xFFFFU, 0x107U);
}

TEST_F(RegistryEntries, ReadOfAStringKeepsItsNulAndNothingMore) {
    struct Case {
        const char* name;
        std::vector<unsigned char> stored;
        std::wstring read;
    };
    const Case cases[] = {
        {"with its NUL", Bytes(std::wstring(L"text\0", 5)), std::wstring(L"text\0", 5)},
        {"without a NUL", Bytes(L"text"), L"text"},
        {"one character with its NUL, as long as a DWORD", Bytes(std::wstring(L"x\0", 2)), std::wstring(L"x\0", 2)},
        {"one character without a NUL", Bytes(L"x"), L"x"},
        {"a NUL alone", Bytes(std::wstring(1, L'\0')), std::wstring(1, L'\0')},
        {"no bytes at all", {}, L""},
        {"an odd size", {'t', 0, 'e', 0, 'x', 0, 't', 0, '!'}, L"text"},
        {"one byte", {'t'}, L""},
        {"several strings", Bytes(std::wstring(L"a\0b\0\0", 5)), std::wstring(L"a\0b\0\0", 5)},
    };
    for (const Case& item : cases) {
        for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}, DWORD{REG_MULTI_SZ}}) {
            SetValue(Subkey, L"Value", type, item.stored);
            RegistryEntry entry = Entry(L"Value");
            entry.stringData = L"something that was there before";
            EXPECT_TRUE(entry.Read()) << item.name;
            EXPECT_EQ(entry.type, type) << item.name;
            EXPECT_EQ(entry.stringData, item.read) << item.name;
        }
    }
}

TEST_F(RegistryEntries, ReadGivesBackWhatWriteStored) {
    RegistryEntry entry = Entry(L"Value");
    entry.type = REG_SZ;
    entry.stringData = L"a longer text";
    entry.Write();
    RegistryEntry read = Entry(L"Value");
    EXPECT_TRUE(read.Read());
    EXPECT_EQ(read.stringData, entry.stringData);
}

TEST_F(RegistryEntries, ReadOfTheDefaultValueNeedsNoName) {
    SetValue(Subkey, nullptr, REG_SZ, Bytes(L"default"));
    RegistryEntry entry = Entry(nullptr);
    EXPECT_TRUE(entry.Read());
    EXPECT_EQ(entry.stringData, L"default");
}

TEST_F(RegistryEntries, ReadOfATypeThatTheRecordDoesNotHoldFailsButTellsTheType) {
    for (const DWORD type : {DWORD{REG_BINARY}, DWORD{REG_QWORD}, DWORD{REG_NONE}}) {
        SetValue(Subkey, L"Value", type, {1, 2, 3, 4, 5, 6, 7, 8});
        RegistryEntry entry = Entry(L"Value");
        entry.type = REG_SZ;
        EXPECT_FALSE(entry.Read()) << type;
        EXPECT_EQ(entry.type, type);
    }
}

TEST_F(RegistryEntries, ReadOfWhatIsMissingFailsWithoutALogEntry) {
    RegistryEntry entry = Entry(L"Value");
    EXPECT_FALSE(entry.Read()) << "the key is missing";
    Entry(nullptr).Write();
    const LoggedEntries since;
    EXPECT_FALSE(entry.Read()) << "the value is missing";
    EXPECT_EQ(since.Get(), Entries{});
}

TEST_F(RegistryEntries, ReadClosesTheKeyWhateverHappens) {
    SetDword(Subkey, L"Number", 1);
    SetValue(Subkey, L"Text", REG_SZ, Bytes(L"text"));
    SetValue(Subkey, L"Bytes", REG_BINARY, {1});
    for (const wchar_t* name : {L"Number", L"Text", L"Bytes", L"Missing"}) {
        const ClosedKeys closed;
        Entry(name).Read();
        EXPECT_EQ(closed.Get(), 1) << testing::PrintToString(std::wstring(name));
    }
}

TEST_F(RegistryEntries, WriteAndDeleteCloseTheKeyThatTheyOpened) {
    RegistryEntry entry = Entry(L"Value");
    const auto closedBy = [](const std::function<void()>& action) {
        const ClosedKeys closed;
        action();
        return closed.Get();
    };
    EXPECT_EQ(closedBy([&] { entry.Write(); }), 1) << "the key alone";
    entry.type = REG_DWORD;
    EXPECT_EQ(closedBy([&] { entry.Write(); }), 1);
    EXPECT_EQ(closedBy([&] { entry.Delete(); }), 1);
    EXPECT_EQ(closedBy([&] { entry.Delete(); }), 1) << "the value is missing";
}

TEST_F(RegistryEntries, ReadAndDeleteAskForTheAccessThatTheyNeedAndNoView) {
    static std::vector<REGSAM> asked;
    asked.clear();
    const ImportPatch<decltype(RegOpenKeyExW)> open("RegOpenKeyExW",
                                                    [](HKEY, LPCWSTR, DWORD options, REGSAM wanted, PHKEY) -> LSTATUS {
                                                        EXPECT_EQ(options, 0U);
                                                        asked.push_back(wanted);
                                                        return ERROR_ACCESS_DENIED;
                                                    });
    Entry(L"Value").Read();
    Entry(L"Value").Delete();
    EXPECT_EQ(asked, (std::vector<REGSAM>{KEY_QUERY_VALUE, KEY_SET_VALUE}));
}

TEST_F(RegistryEntries, ReadFoldsAKeyThatCannotBeOpenedIntoFalse) {
    const ImportPatch<decltype(RegOpenKeyExW)> open(
        "RegOpenKeyExW", [](HKEY, LPCWSTR, DWORD, REGSAM, PHKEY) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_FALSE(Entry(L"Value").Read());
    EXPECT_EQ(Logged(), Entries{});
}

TEST_F(RegistryEntries, ReadFoldsAValueThatCannotBeQueriedIntoFalse) {
    SetDword(Subkey, L"Value", 1);
    const ImportPatch<decltype(RegQueryValueExW)> query(
        "RegQueryValueExW",
        [](HKEY, LPCWSTR, LPDWORD, LPDWORD, LPBYTE, LPDWORD) -> LSTATUS { return ERROR_ACCESS_DENIED; });
    EXPECT_FALSE(Entry(L"Value").Read());
}

namespace {

/// Makes the value change between the two queries of one read.
class ValueChangesBetweenQueries {
public:
    explicit ValueChangesBetweenQueries(const wchar_t* then) { Then = then, Queries = 0; }

private:
    static LSTATUS WINAPI Query(HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size) {
        if (++Queries == 2)
            SetValue(Subkey, name, REG_SZ, Bytes(Then));
        return Original(key, name, reserved, type, data, size);
    }

    static inline const wchar_t* Then = nullptr;
    static inline int Queries = 0;
    static inline decltype(RegQueryValueExW)* Original = ImportedNow<decltype(RegQueryValueExW)>("RegQueryValueExW");
    ImportPatch<decltype(RegQueryValueExW)> patch_{"RegQueryValueExW", Query};
};

} // namespace

TEST_F(RegistryEntries, ReadOfAStringThatGrowsMeanwhileFails) {
    SetValue(Subkey, L"Value", REG_SZ, Bytes(L"short"));
    const ValueChangesBetweenQueries change(L"much longer than before");
    EXPECT_FALSE(Entry(L"Value").Read());
}

TEST_F(RegistryEntries, ReadOfAStringThatShrinksMeanwhileKeepsTheFirstLength) {
    SetValue(Subkey, L"Value", REG_SZ, Bytes(L"longer"));
    const ValueChangesBetweenQueries change(L"new");
    RegistryEntry entry = Entry(L"Value");
    EXPECT_TRUE(entry.Read());
    EXPECT_EQ(entry.stringData, std::wstring(L"new\0\0\0", 6));
}

// Delete

TEST_F(RegistryEntries, DeleteRemovesTheValueAndKeepsTheKey) {
    SetDword(Subkey, L"Value", 1);
    SetDword(Subkey, L"Other", 1);
    Entry(L"Value").Delete();
    EXPECT_EQ(GetValue(Subkey, L"Value"), std::nullopt);
    EXPECT_EQ(GetValue(Subkey, L"Other"), Dword(1));
    EXPECT_EQ(Logged(), Entries{L"Deleting registry key: HKCU\\Software\\Vellumkit\\Value"});
}

TEST_F(RegistryEntries, DeleteOfAValueUnderAMissingKeyLogsKeyNotFound) {
    Entry(L"Value").Delete();
    EXPECT_EQ(Logged(), (Entries{L"Deleting registry key: HKCU\\Software\\Vellumkit\\Value", L"Key not found"}));
}

TEST_F(RegistryEntries, DeleteOfAMissingValueLogsValueNotFound) {
    SetDword(Subkey, L"Other", 1);
    Entry(L"Value").Delete();
    EXPECT_EQ(Logged(), (Entries{L"Deleting registry key: HKCU\\Software\\Vellumkit\\Value", L"Value not found"}));
}

TEST_F(RegistryEntries, DeleteWithoutAValueNameRemovesTheWholeTree) {
    SetDword(L"Software\\Vellumkit\\Deep\\Deeper", L"Value", 1);
    SetDword(Subkey, L"Value", 1);
    Entry(nullptr).Delete();
    EXPECT_FALSE(KeyExists(Subkey));
    EXPECT_TRUE(KeyExists(L"Software"));
    EXPECT_EQ(Logged(), Entries{L"Deleting registry key: HKCU\\Software\\Vellumkit\\@"});
}

TEST_F(RegistryEntries, DeleteOfAMissingTreeLogsKeyNotFound) {
    Entry(nullptr).Delete();
    EXPECT_EQ(Logged(), (Entries{L"Deleting registry key: HKCU\\Software\\Vellumkit\\@", L"Key not found"}));
}

TEST_F(RegistryEntries, DeleteThatFailsLogsAnErrorWithoutADescription) {
    SetDword(Subkey, L"Value", 1);
    const Entries expected{L"Deleting registry key: HKCU\\Software\\Vellumkit\\Value", L"ERROR: "};
    {
        const LoggedEntries log;
        const ImportPatch<decltype(RegOpenKeyExW)> open(
            "RegOpenKeyExW", [](HKEY, LPCWSTR, DWORD, REGSAM, PHKEY) -> LSTATUS { return ERROR_ACCESS_DENIED; });
        Entry(L"Value").Delete();
        EXPECT_EQ(log.Get(), expected) << "the key cannot be opened";
    }
    {
        const LoggedEntries log;
        const ImportPatch<decltype(RegDeleteValueW)> remove(
            "RegDeleteValueW", [](HKEY, LPCWSTR) -> LSTATUS { return ERROR_ACCESS_DENIED; });
        Entry(L"Value").Delete();
        EXPECT_EQ(log.Get(), expected) << "the value cannot be deleted";
    }
    {
        const LoggedEntries log;
        const ImportPatch<decltype(RegDeleteTreeW)> remove(
            "RegDeleteTreeW", [](HKEY, LPCWSTR) -> LSTATUS { return ERROR_ACCESS_DENIED; });
        Entry(nullptr).Delete();
        EXPECT_EQ(log.Get(), (Entries{L"Deleting registry key: HKCU\\Software\\Vellumkit\\@", L"ERROR: "}))
            << "the tree cannot be deleted";
    }
}

TEST_F(RegistryEntries, DeleteLogsTheDescriptionThatAnErrorCarriesInTheAnsiCodePage) {
    const ImportPatch<decltype(RegDeleteTreeW)> remove("RegDeleteTreeW", [](HKEY, LPCWSTR) -> LSTATUS {
        throw _com_error(E_FAIL, MakeErrorInformation(L"The hive is gone. \x91CD"));
    });
    Entry(nullptr).Delete();
    // A Western code page has no such character, a Chinese one has.
    char ansi[3] = {};
    WideCharToMultiByte(CP_ACP, 0, L"\x91CD", 1, ansi, sizeof ansi, nullptr, nullptr);
    wchar_t kept[2] = {};
    MultiByteToWideChar(CP_ACP, 0, ansi, -1, kept, 2);
    EXPECT_EQ(Logged().back(), std::wstring(L"ERROR: The hive is gone. ") + kept);
}

TEST_F(RegistryEntries, DeleteLogsADescriptionOfASingleCharacter) {
    const ImportPatch<decltype(RegDeleteTreeW)> remove(
        "RegDeleteTreeW", [](HKEY, LPCWSTR) -> LSTATUS { throw _com_error(E_FAIL, MakeErrorInformation(L"?")); });
    Entry(nullptr).Delete();
    EXPECT_EQ(Logged().back(), L"ERROR: ?");
}
