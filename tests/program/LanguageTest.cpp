// The language of the real executable's window: what the settings of Office and Windows name, on buttons and painted.

#include "core/LanguageTable.h"
#include "core/LocalizedStrings.h"
#include "tests/support/Machine.h"
#include "tests/support/Registry.h"

#include <algorithm>

namespace {

/// What an Office is set to for the current user.
struct OfficeLanguage {
    const wchar_t* version;
    /// 0: not set.
    DWORD language = 0;
    /// Null: not set.
    const wchar_t* fallback = nullptr;
};

struct LanguageCase {
    std::string name;
    std::vector<OfficeLanguage> offices;
    std::wstring_view code;
};

class Language : public WindowedMachine, public testing::WithParamInterface<LanguageCase> {
protected:
    void SetUp() override {
        WindowedMachine::SetUp();
        RegDeleteTreeW(HKEY_CURRENT_USER, OfficeLanguages);
        for (const OfficeLanguage& office : GetParam().offices)
            Set(office);
    }

    /// Compares the buttons' captions and what is painted.
    void ExpectWindowInItsLanguage() const {
        LoadLocalizedStrings(GetParam().code);
        ExpectInstalled(Start(L""));
    }

private:
    static void Set(const OfficeLanguage& office) {
        const std::wstring key =
            std::wstring(L"Software\\Microsoft\\Office\\") + office.version + L"\\Common\\LanguageResources";
        if (office.language != 0)
            SetDword(key.c_str(), L"UILanguage", office.language);
        if (office.fallback != nullptr)
            SetValue(key.c_str(), L"UIFallback", REG_MULTI_SZ, Bytes(office.fallback + std::wstring(2, L'\0')));
    }
};

using LanguageOfTheWindow = Language;

// On machines whose Windows has the locale fr-CA, and uk-UA, which is not supported.
using LanguageOnAFrenchWindows = Language;
using LanguageOnAUkrainianWindows = Language;

/// The newest Office in each of the languages.
std::vector<LanguageCase> EveryLanguageOfOffice() {
    std::vector<LanguageCase> cases;
    for (const LanguageRow& language : LanguageTable) {
        std::string name(language.code.begin(), language.code.end());
        std::erase(name, '-');
        cases.push_back({name, {{L"16.0", language.officeLcid}}, language.code});
    }
    return cases;
}

const auto NameOf = [](const auto& item) { return item.param.name; };

} // namespace

INSTANTIATE_TEST_SUITE_P(OfOffice, LanguageOfTheWindow, testing::ValuesIn(EveryLanguageOfOffice()), NameOf);
INSTANTIATE_TEST_SUITE_P(
    OfSettings, LanguageOfTheWindow,
    testing::Values(LanguageCase{"CzechOfTheOldestOffice", {{L"14.0", 1029}}, L"cs"},
                    LanguageCase{"DutchOfBelgium", {{L"16.0", 2067}}, L"nl"},
                    LanguageCase{"FrenchOfCanada", {{L"16.0", 3084}}, L"fr"},
                    LanguageCase{"GermanOfTheNewestOffice", {{L"14.0", 1036}, {L"15.0", 1040}, {L"16.0", 1031}}, L"de"},
                    LanguageCase{"ItalianOfTheNewerOffice", {{L"14.0", 1036}, {L"15.0", 1040}}, L"it"},
                    LanguageCase{"NorwegianInTheFallback", {{L"16.0", 2068, L"1044"}}, L"nb"},
                    LanguageCase{"PolishInTheFallbackAlone", {{L"15.0", 0, L"1045"}}, L"pl"},
                    LanguageCase{"RussianOfTheOlderOffice", {{L"15.0", 1049}, {L"16.0", 1058}}, L"ru"},
                    LanguageCase{"SlovakBehindASemicolon", {{L"16.0", 1058, L"1053;1051"}}, L"sk"}),
    NameOf);

TEST_P(LanguageOfTheWindow, IsThatOfTheSettings) {
    ExpectWindowInItsLanguage();
}

INSTANTIATE_TEST_SUITE_P(, LanguageOnAFrenchWindows,
                         testing::Values(LanguageCase{"FrenchWithoutOffice", {}, L"fr"},
                                         LanguageCase{"FrenchWhenOfficesIsNotSupported", {{L"16.0", 1058}}, L"fr"},
                                         LanguageCase{"ThatOfOffice", {{L"14.0", 1031}}, L"de"},
                                         LanguageCase{"EnglishOfGreatBritain", {{L"16.0", 2057}}, L"en"},
                                         LanguageCase{"EnglishInTheFallback", {{L"16.0", 2070, L"1033"}}, L"en"}),
                         NameOf);

TEST_P(LanguageOnAFrenchWindows, IsThatOfTheSettings) {
    ExpectWindowInItsLanguage();
}

INSTANTIATE_TEST_SUITE_P(, LanguageOnAUkrainianWindows, testing::Values(LanguageCase{"English", {}, L"en"}), NameOf);

TEST_P(LanguageOnAUkrainianWindows, IsTheLastResort) {
    ExpectWindowInItsLanguage();
}
