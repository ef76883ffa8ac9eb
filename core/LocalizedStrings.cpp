#include "core/LocalizedStrings.h"

#include "core/LanguageTable.h"

#include <algorithm>

namespace {

/// What the table holds before a language is loaded.
constexpr LanguageTexts NoTexts = [] {
    LanguageTexts texts{};
    texts.fill(L"");
    return texts;
}();

constinit LanguageTexts LocalizedStrings = NoTexts;

std::vector<LanguageEntry> ListLanguages() {
    std::vector<LanguageEntry> languages;
    languages.reserve(LanguageTable.size());
    for (const SupportedLanguage& language : LanguageTable)
        languages.push_back({std::wstring(language.code), language.displayName});
    return languages;
}

} // namespace

const std::vector<LanguageEntry>& SupportedLanguages() {
    static const std::vector<LanguageEntry> languages = ListLanguages();
    return languages;
}

void LoadLocalizedStrings(std::wstring_view code) {
    const auto* const language = std::ranges::find(LanguageTable, code, &SupportedLanguage::code);
    if (language != LanguageTable.end())
        LocalizedStrings = language->texts;
}

const wchar_t* LocalizedText(StringId id) {
    return LocalizedStrings[id];
}

std::wstring GetLocalizedString(StringId id) {
    return LocalizedText(id);
}
