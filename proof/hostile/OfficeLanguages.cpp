#include "core/UiLanguage.h"
#include "proof/hostile/HostileRegistry.h"
#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "proof/hostile/Rules.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"

namespace {

using namespace std::string_view_literals;

constexpr DWORD Languages[] = {1033, 2052, 1028, 1029, 1043, 1036, 1031, 1040, 1044, 1045,  1046, 1049,
                               1051, 3082, 1055, 1071, 2070, 3076, 2068, 1058, 0,    0x400, 0x7F, 0x10407};

constexpr std::wstring_view FallbackPieces[] = {
    L"1033",        L"1031",  L"1055",  L";",         L";",    L";",    L"\0"sv, L"\0\0"sv,     L"0",
    L"-",           L"+",     L" ",     L"\t1049",    L"2070", L"3082", L"x",    L"4294968327", L"99999999999999999999",
    L"-4294966265", L"0x407", L"1031x", L"000001036", L"1e3",
};

/// The user's locale, as long as the test says.
std::wstring WindowsLocale;

int WINAPI GetWindowsLocale(LPWSTR name, int size) {
    const bool fits = static_cast<int>(WindowsLocale.size()) < size;
    if (fits)
        std::char_traits<wchar_t>::copy(name, WindowsLocale.c_str(), WindowsLocale.size() + 1);
    return fits ? static_cast<int>(WindowsLocale.size()) + 1 : 0;
}

/// Takes the digits of other scripts out of a text: which of them count is the C runtime's own business.
void TakeOutForeignDigits(std::vector<unsigned char>& text) {
    for (std::size_t low = 0; low + 1 < text.size(); low += 2) {
        const auto character = static_cast<wchar_t>(text[low] + 256 * text[low + 1]);
        wchar_t folded = character;
        FoldStringW(MAP_FOLDDIGITS, &character, 1, &folded, 1);
        if (folded != character)
            text[low] = text[low + 1] = 'x';
    }
}

Rules::Value HostileLanguage(Random& random) {
    if (random.OneIn(3))
        return HostileValue(random);
    return {REG_DWORD, Dword(random.Pick(Languages))->bytes};
}

Rules::Value HostileFallback(Random& random) {
    Rules::Value value = HostileString(random, TextOf(random, FallbackPieces));
    if (random.OneIn(8))
        value = HostileValue(random);
    else if (!random.OneIn(8))
        value.type = REG_MULTI_SZ;
    TakeOutForeignDigits(value.bytes);
    return value;
}

} // namespace

TEST(HostileOfficeLanguage, IsTheOneThatTheRulesFind) {
    const RegistrySandbox sandbox;
    const ImportPatch<decltype(GetWindowsLocale)> locale("GetUserDefaultLocaleName", GetWindowsLocale);
    ForEachInput({.sample = 1'500, .whole = 50'000}, [](Random& random) {
        WindowsLocale = random.OneIn(2) ? L"de-DE" : Rules::UpToNul(HostileText(random));
        std::wstring expected;
        Rules::Registry registry;
        for (const int version : {16, 15, 14}) {
            std::optional<Rules::Value> language;
            std::optional<Rules::Value> fallback;
            const std::wstring key =
                L"Software\\Microsoft\\Office\\" + std::to_wstring(version) + L".0\\Common\\LanguageResources";
            if (random.OneIn(2))
                registry[{key, L"UILanguage"}] = language.emplace(HostileLanguage(random));
            if (random.OneIn(2))
                registry[{key, L"UIFallback"}] = fallback.emplace(HostileFallback(random));
            if (expected.empty())
                expected = Rules::LanguageOfOffice(language, fallback);
        }
        if (expected.empty() && WindowsLocale.size() < 32)
            expected = Rules::LanguageOfName(WindowsLocale);
        if (expected.empty())
            expected = L"en";
        Store(HKEY_CURRENT_USER, registry);
        const std::wstring code = SelectUiLanguage();
        if (code != expected)
            ADD_FAILURE() << Literal(registry) << "in " << Literal(WindowsLocale) << "\ngive " << Literal(code)
                          << ", not " << Literal(expected);
    });
}
