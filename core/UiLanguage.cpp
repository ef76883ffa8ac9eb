#include "core/UiLanguage.h"

#include "core/LocalizedStrings.h"
#include "core/RegistryEntry.h"

#include <comdef.h>
#include <strsafe.h>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

bool ReadLanguageSetting(int version, const wchar_t* valueName, DWORD type, RegistryEntry& entry) {
    std::array<wchar_t, 64> subkey{};
    StringCchPrintfW(subkey.data(), subkey.size(), LR"(Software\Microsoft\Office\%d.0\Common\LanguageResources)",
                     version);
    entry = {.root = HKEY_CURRENT_USER, .subkey = subkey.data(), .valueName = valueName};
    return entry.Read() && entry.type == type;
}

bool LanguageOfUserLocale(std::wstring& code) {
    std::array<wchar_t, 32> name{};
    return GetUserDefaultLocaleName(name.data(), static_cast<int>(name.size())) != 0 &&
           MatchLocaleName(name.data(), code);
}

} // namespace

std::wstring SelectUiLanguage() {
    std::wstring code;
    try {
        for (const int version : {16, 15, 14}) {
            if (OfficeUiLanguage(version, code))
                return code;
        }
        if (LanguageOfUserLocale(code))
            return code;
    } catch (const _com_error&) { // ends the search
    }
    return L"en";
}

bool OfficeUiLanguage(int version, std::wstring& code) {
    RegistryEntry setting;
    if (ReadLanguageSetting(version, L"UILanguage", REG_DWORD, setting) && MatchLcid(setting.dwordData, code))
        return true;
    if (!ReadLanguageSetting(version, L"UIFallback", REG_MULTI_SZ, setting))
        return false;
    const std::vector<std::wstring> pieces = SplitText(setting.stringData, L";");
    for (const std::wstring& piece : pieces) {
        // Up to its first NUL. So of the list's strings the first one counts, and of a later one only what follows a
        // ";": which language the users of such an Office get depends on it.
        const auto lcid = static_cast<LCID>(_wtoi(piece.c_str()));
        if (MatchLcid(lcid, code))
            return true;
    }
    return false;
}

bool MatchLocaleName(std::wstring_view localeName, std::wstring& code) {
    const std::vector<LanguageEntry>& languages = SupportedLanguages();
    const auto match = std::ranges::find_if(
        languages, [localeName](const LanguageEntry& language) { return localeName.starts_with(language.code); });
    if (match == languages.end())
        return false;
    code = match->code;
    return true;
}

bool MatchLcid(LCID lcid, std::wstring& code) {
    if (lcid == 0) // what a text without a number converts to; it names no locale
        return false;
    const int size = LCIDToLocaleName(lcid, nullptr, 0, 0);
    std::wstring name(static_cast<std::size_t>(size), L'\0'); // with its NUL
    LCIDToLocaleName(lcid, name.data(), size, 0);
    return MatchLocaleName(name, code);
}

std::vector<std::wstring> SplitText(std::wstring_view text, std::wstring_view separator) {
    std::vector<std::wstring> pieces;
    for (std::size_t start = 0;;) {
        const std::size_t end = text.find(separator, start);
        pieces.emplace_back(text.substr(start, end - start));
        if (end == std::wstring_view::npos)
            return pieces;
        start = end + separator.size();
    }
}
