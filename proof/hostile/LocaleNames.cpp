#include "core/UiLanguage.h"
#include "proof/hostile/HostileText.h"
#include "proof/hostile/Inputs.h"
#include "proof/hostile/Rules.h"

namespace {

using namespace std::string_view_literals;

constexpr std::wstring_view Pieces[] = {
    L"en",           L"zh", L"-CN", L"-TW", L"zh-CN", L"-Hans", L"pt", L"-BR",   L"pt-BR", L"-PT",
    L"de",           L"DE", L"n",   L"nb",  L"nn",    L"-NO",   L"no", L"mk",    L"sk",    L"sl",
    L"es-ES_tradnl", L"t",  L"r",   L"-",   L"_",     L"\0"sv,  L" ",  L"uk-UA", L"f",     L"r",
};

constexpr std::wstring_view Separators[] = {L";", L";;", L"aba", L"\0"sv, L"\r\n", L"a", L"x;x"};

/// The language that `match` finds, "" for none. A test failure when it changes the text and finds none.
template <typename Match>
std::wstring Found(Match match) {
    std::wstring code = L"untouched";
    if (match(code))
        return code;
    EXPECT_EQ(code, L"untouched");
    return {};
}

} // namespace

TEST(HostileLocaleName, HasTheLanguageThatTheRulesFind) {
    ForEachInput({.sample = 100'000, .whole = 300'000}, [](Random& random) {
        const std::wstring name = TextOf(random, Pieces);
        const std::wstring found = Found([&name](std::wstring& code) { return MatchLocaleName(name, code); });
        if (found != Rules::LanguageOfName(name))
            ADD_FAILURE() << Literal(name) << " has " << Literal(found);
    });
}

TEST(HostileLocaleIdentifier, HasTheLanguageThatTheRulesFind) {
    ForEachInput({.sample = 20'000, .whole = 200'000}, [](Random& random) {
        // Most identifiers that Windows knows have 16 bits, and above them a number for the order of sorting.
        const auto identifier = static_cast<LCID>(random.Next() & random.Pick(std::array{0x0FFFU, 0xF0FFFU, ~0U}));
        const std::wstring found = Found([identifier](std::wstring& code) { return MatchLcid(identifier, code); });
        if (found != Rules::LanguageOfIdentifier(identifier))
            ADD_FAILURE() << identifier << " has " << Literal(found);
    });
}

TEST(HostileSeparation, GivesThePiecesThatTheRulesGive) {
    ForEachInput({.sample = 20'000, .whole = 100'000}, [](Random& random) {
        const std::wstring text = TextOf(random, Separators);
        const std::wstring separator(random.Pick(Separators));
        if (SplitText(text, separator) != Rules::Pieces(text, separator))
            ADD_FAILURE() << Literal(text) << " at " << Literal(separator);
    });
}
