#include "core/LocalizedStrings.h"

#include "core/LanguageTable.h"

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
    for (const LanguageRow& language : LanguageTable)
        languages.push_back({std::wstring(language.code), language.displayName});
    return languages;
}

} // namespace

const std::vector<LanguageEntry>& SupportedLanguages() {
    static const std::vector<LanguageEntry> languages = ListLanguages();
    return languages;
}

void LoadLocalizedStrings(std::wstring_view code) {
    for (const LanguageRow& language : LanguageTable) {
        if (language.code == code) {
            LocalizedStrings = language.texts;
            return;
        }
    }
}

const wchar_t* LocalizedText(StringId id) {
    return LocalizedStrings[id];
}

std::wstring GetLocalizedString(StringId id) {
    return LocalizedText(id);
}
