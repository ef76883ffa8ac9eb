#include "core/UiLanguage.h"

#include "core/LocalizedStrings.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"

#include <comdef.h>

#include <algorithm>
#include <gtest/gtest.h>

namespace {

using namespace std::string_literals;

/// A value as it is stored; REG_NONE for none.
struct Setting {
    DWORD type = REG_NONE;
    std::vector<unsigned char> bytes;
};

Setting Language(DWORD lcid) {
    return {REG_DWORD, Dword(lcid)->bytes};
}

/// As many bytes of the data as `size` says, or all of them.
Setting Stored(DWORD type, const std::wstring& data, std::size_t size = std::wstring::npos) {
    std::vector<unsigned char> bytes = Bytes(data);
    bytes.resize(std::min(size, bytes.size()));
    return {type, bytes};
}

/// A multi-string of these strings.
Setting Fallback(const std::vector<std::wstring>& strings) {
    std::wstring text;
    for (const std::wstring& string : strings)
        text += string + L'\0';
    return Stored(REG_MULTI_SZ, text + L'\0');
}

void SetOffice(int version, const Setting& language, const Setting& fallback) {
    const std::wstring subkey =
        L"Software\\Microsoft\\Office\\" + std::to_wstring(version) + L".0\\Common\\LanguageResources";
    if (language.type != REG_NONE)
        SetValue(subkey.c_str(), L"UILanguage", language.type, language.bytes);
    if (fallback.type != REG_NONE)
        SetValue(subkey.c_str(), L"UIFallback", fallback.type, fallback.bytes);
}

constexpr wchar_t Untouched[] = L"untouched";

/// What the function answers, as "de" or "no match".
template <typename Function>
std::wstring Answer(Function function) {
    std::wstring code = Untouched;
    if (function(code))
        return code;
    EXPECT_EQ(code, Untouched);
    return L"no match";
}

struct LocaleName {
    const char* name;
    const wchar_t* localeName;
    const wchar_t* answer;
};

class LocaleNames : public testing::TestWithParam<LocaleName> {};

struct Identifier {
    const char* name;
    LCID lcid;
    const wchar_t* answer;
};

class LocaleIdentifiers : public testing::TestWithParam<Identifier> {};

struct Separation {
    const char* name;
    std::wstring text;
    std::wstring separator;
    std::vector<std::wstring> pieces;
};

class SeparatedTexts : public testing::TestWithParam<Separation> {};

struct OfficeSettings {
    const char* name;
    Setting language;
    Setting fallback;
    const wchar_t* answer;
};

class OfficeLanguage : public testing::TestWithParam<OfficeSettings> {};

struct Office {
    int version;
    Setting language;
    Setting fallback = {};
};

struct Selection {
    const char* name;
    std::vector<Office> offices;
    const wchar_t* windows; // null when Windows does not tell
    const wchar_t* code;
};

/// With a language of Windows that the test chooses: the machine's own can't be set for one process.
class UiLanguage : public testing::Test {
protected:
    static inline const wchar_t* Windows;

private:
    static int WINAPI GetLocaleName(LPWSTR name, int size) {
        EXPECT_EQ(size, 32);
        const std::wstring locale = Windows != nullptr ? Windows : L"de-DE";
        std::copy_n(locale.c_str(), locale.size() + 1, name);
        return Windows != nullptr ? static_cast<int>(locale.size()) + 1 : 0;
    }

    RegistrySandbox sandbox_;
    ImportPatch<decltype(GetUserDefaultLocaleName)> locale_{"GetUserDefaultLocaleName", GetLocaleName};
};

class SelectedLanguage : public UiLanguage, public testing::WithParamInterface<Selection> {};

const auto NameOf = [](const auto& item) { return item.param.name; };

} // namespace

INSTANTIATE_TEST_SUITE_P(
    , LocaleNames,
    testing::Values(LocaleName{"British", L"en-GB", L"en"}, LocaleName{"American", L"en-US", L"en"},
                    LocaleName{"Brazilian", L"pt-BR", L"pt-BR"}, LocaleName{"Portuguese", L"pt-PT", L"no match"},
                    LocaleName{"China", L"zh-CN", L"zh-CN"}, LocaleName{"Taiwan", L"zh-TW", L"zh-TW"},
                    LocaleName{"HongKong", L"zh-HK", L"no match"}, LocaleName{"Singapore", L"zh-SG", L"no match"},
                    LocaleName{"SimplifiedScript", L"zh-Hans-CN", L"no match"}, LocaleName{"Bokmal", L"nb-NO", L"nb"},
                    LocaleName{"Nynorsk", L"nn-NO", L"no match"}, LocaleName{"Ukrainian", L"uk-UA", L"no match"},
                    LocaleName{"WithoutARegion", L"de", L"de"},
                    LocaleName{"WithMoreThanARegion", L"es-ES_tradnl", L"es"},
                    LocaleName{"ThatOnlyBeginsSo", L"deu", L"de"}, LocaleName{"Shorter", L"d", L"no match"},
                    LocaleName{"CutOff", L"pt-B", L"no match"}, LocaleName{"Empty", L"", L"no match"},
                    LocaleName{"InCapitals", L"DE-DE", L"no match"},
                    LocaleName{"WithARegionInSmallLetters", L"pt-br", L"no match"},
                    LocaleName{"NotAtItsStart", L"x-de", L"no match"}),
    NameOf);

TEST_P(LocaleNames, MatchByTheirStart) {
    EXPECT_EQ(Answer([](std::wstring& code) { return MatchLocaleName(GetParam().localeName, code); }),
              GetParam().answer);
}

TEST(SupportedLanguageCodes, MatchThemselves) {
    for (const LanguageEntry& language : SupportedLanguages())
        EXPECT_EQ(Answer([&](std::wstring& code) { return MatchLocaleName(language.code, code); }), language.code);
}

INSTANTIATE_TEST_SUITE_P(
    , LocaleIdentifiers,
    testing::Values(Identifier{"German", 1031, L"de"}, Identifier{"Austrian", 3079, L"de"},
                    Identifier{"American", 1033, L"en"}, Identifier{"British", 2057, L"en"},
                    Identifier{"Brazilian", 1046, L"pt-BR"}, Identifier{"Portuguese", 2070, L"no match"},
                    Identifier{"China", 2052, L"zh-CN"}, Identifier{"Taiwan", 1028, L"zh-TW"},
                    Identifier{"HongKong", 3076, L"no match"}, Identifier{"Bokmal", 1044, L"nb"},
                    Identifier{"Nynorsk", 2068, L"no match"}, Identifier{"Turkish", 1055, L"tr"},
                    Identifier{"Macedonian", 1071, L"mk"}, Identifier{"Ukrainian", 1058, L"no match"},
                    Identifier{"ThatIsZero", 0, L"no match"}, Identifier{"Unknown", 0x12345, L"no match"},
                    Identifier{"Largest", 0xFFFFFFFF, L"no match"}),
    NameOf);

TEST_P(LocaleIdentifiers, MatchByTheirLocalesName) {
    EXPECT_EQ(Answer([](std::wstring& code) { return MatchLcid(GetParam().lcid, code); }), GetParam().answer);
}

TEST(LocaleIdentifier, IsNamedInAsMuchRoomAsTheNameTakes) {
    static std::vector<int> sizes;
    sizes.clear();
    const ImportPatch<decltype(LCIDToLocaleName)> name("LCIDToLocaleName",
                                                       [](LCID lcid, LPWSTR text, int size, DWORD flags) -> int {
                                                           EXPECT_EQ(lcid, 4711U);
                                                           EXPECT_EQ(flags, 0U);
                                                           sizes.push_back(size);
                                                           if (size != 0)
                                                               std::copy_n(L"fr-CA", 6, text);
                                                           return 6;
                                                       });
    EXPECT_EQ(Answer([](std::wstring& code) { return MatchLcid(4711, code); }), L"fr");
    EXPECT_EQ(sizes, (std::vector{0, 6}));
}

INSTANTIATE_TEST_SUITE_P(, SeparatedTexts,
                         testing::Values(Separation{"Empty", L"", L";", {L""}}, Separation{"Whole", L"a", L";", {L"a"}},
                                         Separation{"Two", L"a;bc", L";", {L"a", L"bc"}},
                                         Separation{"SeparatorAtTheEnd", L"a;", L";", {L"a", L""}},
                                         Separation{"SeparatorAtTheStart", L";a", L";", {L"", L"a"}},
                                         Separation{"SeparatorAlone", L";", L";", {L"", L""}},
                                         Separation{"EmptyPiece", L"a;;b", L";", {L"a", L"", L"b"}},
                                         Separation{"LongSeparator", L"a<>b<c><>", L"<>", {L"a", L"b<c>", L""}},
                                         Separation{"OverlappingSeparators", L"aaa", L"aa", {L"", L"a"}},
                                         Separation{"Nul", L"a\0b;c"s, L";", {L"a\0b"s, L"c"}}),
                         NameOf);

TEST_P(SeparatedTexts, FallIntoAllTheirPieces) {
    EXPECT_EQ(SplitText(GetParam().text, GetParam().separator), GetParam().pieces);
}

INSTANTIATE_TEST_SUITE_P(
    , OfficeLanguage,
    testing::Values(OfficeSettings{"NotSet", {}, {}, L"no match"}, OfficeSettings{"Set", Language(1031), {}, L"de"},
                    OfficeSettings{"Zero", Language(0), {}, L"no match"},
                    OfficeSettings{"NotSupported", Language(1058), {}, L"no match"},
                    OfficeSettings{"Unknown", Language(0x12345), {}, L"no match"},
                    OfficeSettings{"SetWithAFallback", Language(1031), Fallback({L"1036"}), L"de"},
                    OfficeSettings{"NotSupportedWithAFallback", Language(2070), Fallback({L"1033"}), L"en"},
                    OfficeSettings{"SetAsText", Stored(REG_SZ, L"1031"), {}, L"no match"},
                    OfficeSettings{"SetAsTextWhoseBytesAreALanguage", Stored(REG_SZ, L"\x0407\0"s), {}, L"no match"},
                    OfficeSettings{"SetAsTextWithAFallback", Stored(REG_SZ, L"1031"), Fallback({L"1036"}), L"fr"},
                    OfficeSettings{"SetAsBinary", Stored(REG_BINARY, L"\x0407\0"s), {}, L"no match"},
                    OfficeSettings{"FallbackOnly", {}, Fallback({L"1031"}), L"de"},
                    OfficeSettings{"FallbackAsText", {}, Stored(REG_SZ, L"1031"), L"no match"},
                    OfficeSettings{"FallbackAsExpandableText", {}, Stored(REG_EXPAND_SZ, L"1031"), L"no match"},
                    OfficeSettings{"FallbackAsNumber", {}, Language(1031), L"no match"},
                    OfficeSettings{"FallbackWithoutData", {}, Stored(REG_MULTI_SZ, L""), L"no match"},
                    OfficeSettings{"FallbackWithoutStrings", {}, Fallback({}), L"no match"},
                    OfficeSettings{"FallbackWithoutNul", {}, Stored(REG_MULTI_SZ, L"1031"), L"de"},
                    OfficeSettings{"FallbackWithOneNul", {}, Stored(REG_MULTI_SZ, L"1031\0"s), L"de"},
                    OfficeSettings{"FallbackOfAnOddSize", {}, Stored(REG_MULTI_SZ, L"1031;1036", 9), L"de"},
                    OfficeSettings{"FallbackCutWithinTheNumber", {}, Stored(REG_MULTI_SZ, L"1031", 7), L"no match"},
                    OfficeSettings{"FallbackOfOneByte", {}, Stored(REG_MULTI_SZ, L"1", 1), L"no match"},
                    OfficeSettings{"FallbackOfTwoStrings", {}, Fallback({L"1031", L"1036"}), L"de"},
                    OfficeSettings{"FallbackInTheSecondString", {}, Fallback({L"1053", L"1031"}), L"no match"},
                    OfficeSettings{"FallbackOfTwoNumbers", {}, Fallback({L"1031;1036"}), L"de"},
                    OfficeSettings{"FallbackInTheSecondNumber", {}, Fallback({L"1053;1031"}), L"de"},
                    OfficeSettings{"FallbackInTheLastNumber", {}, Fallback({L"1053;2070;1049;"}), L"ru"},
                    OfficeSettings{
                        "FallbackBehindTheSecondStringsSeparator", {}, Fallback({L"1053", L"1036;1031"}), L"de"},
                    OfficeSettings{"FallbackWithBlanksSignAndUnit", {}, Fallback({L" +1031x"}), L"de"},
                    OfficeSettings{"FallbackInHexadecimal", {}, Fallback({L"0x407"}), L"no match"},
                    OfficeSettings{"FallbackThatIsNoNumber", {}, Fallback({L"de"}), L"no match"},
                    OfficeSettings{"FallbackBehindAnEmptyNumber", {}, Fallback({L";1031"}), L"de"},
                    OfficeSettings{"FallbackNegative", {}, Fallback({L"-1031"}), L"no match"}),
    NameOf);

TEST_P(OfficeLanguage, IsItsLanguageOrItsFallback) {
    for (const int installed : {14, 15, 16}) {
        const RegistrySandbox sandbox;
        SetOffice(installed, GetParam().language, GetParam().fallback);
        for (const int version : {14, 15, 16}) {
            EXPECT_EQ(Answer([version](std::wstring& code) { return OfficeUiLanguage(version, code); }),
                      version == installed ? GetParam().answer : L"no match");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    , SelectedLanguage,
    testing::Values(
        Selection{"OfWindowsWithoutOffice", {}, L"fr-CA", L"fr"},
        Selection{"OfOfficeBeforeThatOfWindows", {{16, Language(1046)}}, L"de-DE", L"pt-BR"},
        Selection{"OfOfficesFallback", {{16, Language(2070), Fallback({L"1033"})}}, L"de-DE", L"en"},
        Selection{"OfAnOlderOfficeWhenTheNewerOnesIsNotSupported",
                  {{15, Language(1049)}, {16, Language(1058)}},
                  L"de-DE",
                  L"ru"},
        Selection{"OfTheNewestOffice", {{14, Language(1036)}, {15, Language(1049)}, {16, Language(1031)}}, L"", L"de"},
        Selection{"OfTheNewerOffice", {{14, Language(1036)}, {15, Language(1049)}}, L"", L"ru"},
        Selection{"OfTheOldestOffice", {{14, Language(1036)}}, L"", L"fr"},
        Selection{"OfANewersFallbackBeforeAnOldersLanguage",
                  {{15, Language(1031)}, {16, {}, Fallback({L"1036"})}},
                  L"",
                  L"fr"},
        Selection{
            "OfNoOtherOffice", {{12, Language(1031)}, {13, Language(1031)}, {17, Language(1031)}}, L"it-IT", L"it"},
        Selection{"OfWindowsWhenOfficesIsNotSupported", {{16, Language(1058), Fallback({L"2070"})}}, L"it-IT", L"it"},
        Selection{"EnglishWhenNeitherIsSupported", {{16, Language(1058)}}, L"zh-HK", L"en"},
        Selection{"EnglishWithoutOfficeInHongKong", {}, L"zh-HK", L"en"},
        Selection{"EnglishWhenWindowsDoesNotTell", {}, nullptr, L"en"}),
    NameOf);

TEST_P(SelectedLanguage, IsTheFirstThatIsSupported) {
    for (const Office& office : GetParam().offices)
        SetOffice(office.version, office.language, office.fallback);
    Windows = GetParam().windows;
    EXPECT_EQ(SelectUiLanguage(), GetParam().code);
}

TEST_F(UiLanguage, IsThatOfAnOlderOfficeWhenTheNewerOnesCannotBeRead) {
    static auto* const Open = ImportedNow<decltype(RegOpenKeyExW)>("RegOpenKeyExW");
    SetOffice(16, Language(1036), {});
    SetOffice(15, Language(1031), {});
    Windows = L"it-IT";
    const ImportPatch<decltype(RegOpenKeyExW)> open(
        "RegOpenKeyExW", [](HKEY root, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY key) -> LSTATUS {
            const bool newest = std::wstring_view(subkey).find(L"16.0") != std::wstring_view::npos;
            return newest ? ERROR_ACCESS_DENIED : Open(root, subkey, options, access, key);
        });
    EXPECT_EQ(SelectUiLanguage(), L"de");
}

TEST_F(UiLanguage, IsEnglishAtOnceWhenAnErrorEndsTheSearchInOffice) {
    SetOffice(16, Language(1036), {});
    SetOffice(15, {}, Fallback({L"1031"}));
    Windows = L"it-IT";
    const ImportPatch<decltype(LCIDToLocaleName)> name(
        "LCIDToLocaleName", [](LCID, LPWSTR, int, DWORD) -> int { throw _com_error(E_OUTOFMEMORY); });
    EXPECT_EQ(SelectUiLanguage(), L"en");
}

TEST_F(UiLanguage, IsEnglishWhenAnErrorEndsTheSearchInWindows) {
    const ImportPatch<decltype(GetUserDefaultLocaleName)> locale(
        "GetUserDefaultLocaleName", [](LPWSTR, int) -> int { throw _com_error(E_OUTOFMEMORY); });
    EXPECT_EQ(SelectUiLanguage(), L"en");
}
