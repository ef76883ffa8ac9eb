#include "core/LocalizedStrings.h"

#include "core/languages/cs.h"
#include "core/languages/de.h"
#include "core/languages/en.h"
#include "core/languages/es.h"
#include "core/languages/fr.h"
#include "core/languages/it.h"
#include "core/languages/mk.h"
#include "core/languages/nb.h"
#include "core/languages/nl.h"
#include "core/languages/pl.h"
#include "core/languages/pt-BR.h"
#include "core/languages/ru.h"
#include "core/languages/sk.h"
#include "core/languages/tr.h"
#include "core/languages/zh-CN.h"
#include "core/languages/zh-TW.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::size_t TextCount = StrOneNoteRunning + 1;
using Texts = std::array<const wchar_t*, TextCount>;

struct Language {
    std::wstring_view code;
    const wchar_t* displayName;
    /// A language file that lacks a text has an array of another type, and does not compile here.
    const Texts& texts;
};

/// In the order in which a locale name is matched against them.
constexpr std::array Languages{
    Language{L"en", L"English", English},
    Language{L"zh-CN", L"中文(简体)", SimplifiedChinese},
    Language{L"zh-TW", L"中文(繁體)", TraditionalChinese},
    Language{L"cs", L"čeština", Czech},
    Language{L"nl", L"Nederlands", Dutch},
    Language{L"fr", L"Français", French},
    Language{L"de", L"Deutsch", German},
    Language{L"it", L"Italiano", Italian},
    Language{L"nb", L"norsk", Norwegian},
    Language{L"pl", L"Polski", Polish},
    Language{L"pt-BR", L"Português (Brasil)", BrazilianPortuguese},
    Language{L"ru", L"Русский", Russian},
    Language{L"sk", L"slovenčina", Slovak},
    Language{L"es", L"Español", Spanish},
    Language{L"tr", L"Türkçe", Turkish},
    Language{L"mk", L"македонски јазик", Macedonian},
};

/// What the table holds before a language is loaded.
constexpr Texts NoTexts = [] {
    Texts texts{};
    texts.fill(L"");
    return texts;
}();

constinit Texts LocalizedStrings = NoTexts;

std::vector<LanguageEntry> ListLanguages() {
    std::vector<LanguageEntry> languages;
    for (const Language& language : Languages)
        languages.push_back({std::wstring(language.code), language.displayName});
    return languages;
}

} // namespace

const std::vector<LanguageEntry>& SupportedLanguages() {
    static const std::vector<LanguageEntry> languages = ListLanguages();
    return languages;
}

void LoadLocalizedStrings(std::wstring_view code) {
    const auto* const language = std::ranges::find(Languages, code, &Language::code);
    if (language != Languages.end())
        LocalizedStrings = language->texts;
}

const wchar_t* LocalizedText(StringId id) {
    return LocalizedStrings[id];
}

std::wstring GetLocalizedString(StringId id) {
    return LocalizedText(id);
}
