#include "core/LocalizedStrings.h"

#include "core/LanguageTable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cwctype>
#include <gtest/gtest.h>

namespace {

constexpr std::array<StringId, 12> AllIds{
    StrClose,
    StrGetHelp,
    StrRetry,
    StrStartOneNote,
    StrTempFileFailed,
    StrCheckRunningFailed,
    StrInstallFailed,
    StrReadResourceFailed,
    StrCheckingRequirements,
    StrInstallCompleted,
    StrInstalling,
    StrOneNoteRunning,
};

using Texts = std::vector<std::wstring>;

Texts TextsOf(std::wstring_view code) {
    LoadLocalizedStrings(code);
    Texts texts(AllIds.size());
    std::ranges::transform(AllIds, texts.begin(), GetLocalizedString);
    return texts;
}

/// The table after an unknown code, before any test can load a language.
const Texts BeforeAnyLanguage = TextsOf(L"uk");

std::wstring Text(std::wstring_view code, StringId id) {
    return TextsOf(code)[id];
}

/// The mnemonic in upper case, or 0.
wchar_t Mnemonic(const std::wstring& caption) {
    const std::size_t mark = caption.find(L'&');
    return mark == std::wstring::npos ? L'\0' : static_cast<wchar_t>(std::towupper(caption.at(mark + 1)));
}

/// What a user reads on the button: without the mark, the parenthesised letter of Chinese captions and the " >".
std::wstring ReadCaption(std::wstring caption) {
    if (const std::size_t mark = caption.find(L"(&"); mark != std::wstring::npos)
        caption.erase(mark);
    std::erase(caption, L'&');
    while (caption.ends_with(L' ') || caption.ends_with(L'>'))
        caption.pop_back();
    return caption;
}

/// A hash (FNV-1a, 32 bits) of all texts.
std::uint32_t Fingerprint(const Texts& texts) {
    std::uint32_t hash = 0x811C9DC5;
    for (const std::wstring& text : texts) {
        for (const wchar_t* unit = text.c_str(); unit <= text.c_str() + text.size(); ++unit) // with the final NUL
            hash = (hash ^ *unit) * 0x01000193;
    }
    return hash;
}

/// How the texts of a language begin, in the order of the ids.
struct TextBeginnings {
    std::wstring_view code;
    /// Of the whole texts as a native speaker has read them.
    std::uint32_t fingerprint;
    std::array<std::wstring_view, AllIds.size()> beginnings;
};

class EveryLanguage : public testing::TestWithParam<LanguageEntry> {
protected:
    std::wstring Text(StringId id) const { return ::Text(GetParam().code, id); }
};

} // namespace

TEST(StringIds, CountFromZeroInTheOrderOfTheLanguageFiles) {
    for (std::size_t index = 0; index < AllIds.size(); ++index)
        EXPECT_EQ(AllIds[index], index);
}

TEST(Languages, BeginWithTheseInMatchingOrder) {
    const std::pair<const wchar_t*, const wchar_t*> expected[] = {
        {L"en", L"English"},
        {L"zh-CN", L"中文(简体)"},
        {L"zh-TW", L"中文(繁體)"},
        {L"cs", L"čeština"},
        {L"nl", L"Nederlands"},
        {L"fr", L"Français"},
        {L"de", L"Deutsch"},
        {L"it", L"Italiano"},
        {L"nb", L"norsk"},
        {L"pl", L"Polski"},
        {L"pt-BR", L"Português (Brasil)"},
        {L"ru", L"Русский"},
        {L"sk", L"slovenčina"},
        {L"es", L"Español"},
        {L"tr", L"Türkçe"},
        {L"mk", L"македонски јазик"},
    };
    ASSERT_GE(SupportedLanguages().size(), std::size(expected));
    for (std::size_t index = 0; index < std::size(expected); ++index) {
        EXPECT_EQ(SupportedLanguages()[index].code, expected[index].first) << index;
        EXPECT_EQ(SupportedLanguages()[index].displayName, expected[index].second) << index;
    }
}

TEST(Languages, AreInTheSameListAtEveryCallEachOnce) {
    EXPECT_EQ(&SupportedLanguages(), &SupportedLanguages());
    EXPECT_EQ(SupportedLanguages().size(), LanguageTable.size());
}

TEST(Languages, OfAnUnknownCodeLeaveTheTableAsItIs) {
    EXPECT_EQ(BeforeAnyLanguage, Texts(AllIds.size(), L""));
    const Texts german = TextsOf(L"de");
    for (const wchar_t* code : {L"pt", L"EN", L"", L"de-DE", L"zh", L"pt-br", L"uk"})
        EXPECT_EQ(TextsOf(code), german) << testing::PrintToString(std::wstring(code));
}

TEST(Languages, AreReplacedAsAWhole) {
    TextsOf(L"de");
    EXPECT_EQ(Text(L"en", StrRetry), L"&Retry >");
    EXPECT_EQ(Text(L"de", StrRetry), L"W&iederholen >");
}

TEST(EnglishTexts, AreExact) {
    EXPECT_EQ(
        TextsOf(L"en"),
        (Texts{
            L"&Close", L"Get &Help", L"&Retry >", L"&Start OneNote",
            L"Failed to create temporary file. Make sure you have enough disk space and then click Retry.",
            L"Failed to check whether OneNote is running or not.", L"Installation failed:",
            L"Failed to read installation resource.", L"Checking requirements...",
            L"Installation of Vellumkit add-in for OneNote is completed.", L"Installing. Please wait...",
            L"OneNote or Datebookery is running, please close them before continuing. If you have just closed, please wait a bit and retry."}));
}

TEST(GermanTexts, AreExact) {
    EXPECT_EQ(
        TextsOf(L"de"),
        (Texts{
            L"&Schließen", L"&Hilfe erhalten", L"W&iederholen >", L"&OneNote starten",
            L"Fehler beim Erzeugen einer Temporärdatei. Stellen Sie sicher, dass ausreichend Speicherplatz auf der Platte vorhanden ist und klicken Sie auf Wiederholen",
            L"Fehler bei der Prüfung ob OneNote läuft oder nicht.", L"Installation fehlgeschlagen:",
            L"Fehler beim Lesen aus der Installationsressource.", L"Prüfe Systemvoraussetzungen...",
            L"Die Installation des Vellumkit Add-Ins für OneNote ist abgeschlossen.", L"Installieren. Bitte warten...",
            L"OneNote oder Datebookery läuft gerade. Bitte schließen Sie beide bevor Sie weitermachen. Wenn Sie sie gerade geschlossen haben, warten Sie einen Moment und versuchen Sie es dann erneut."}));
}

TEST(TextsOfOtherLanguages, StandUnderTheirIds) {
    const TextBeginnings languages[] = {
        {L"cs",
         0x57DB688F,
         {L"Zavřít", L"Získat &pomoc", L"Opakovat", L"&Spustit", L"Nepodařilo se vytvořit", L"Nepodařilo se zjistit",
          L"Instalace se nezdařila", L"Nepodařilo se načíst", L"Kontrolují se požadavky", L"Instalace doplňku",
          L"Probíhá instalace", L"Aplikace OneNote nebo Datebookery"}},
        {L"nl",
         0x4DFB0465,
         {L"&Sluiten", L"&Hulp", L"&Opnieuw", L"OneNote s&tarten", L"Kan geen tijdelijk bestand",
          L"Kan niet controleren", L"De installatie is mislukt", L"Kan de installatieresource", L"Systeemvereisten",
          L"De installatie van de Vellumkit", L"Bezig met installeren", L"OneNote of Datebookery"}},
        {L"fr",
         0xD2852D80,
         {L"&Fermer", L"Obtenir de l'&aide", L"&Réessayer", L"&Lancer", L"Impossible de créer",
          L"Impossible de vérifier", L"Échec", L"Impossible de lire", L"Vérification de la configuration",
          L"L'installation du complément", L"Installation en cours", L"OneNote ou Datebookery"}},
        {L"it",
         0x90604494,
         {L"&Chiudi", L"&Ottieni assistenza", L"&Riprova", L"&Avvia", L"Impossibile creare", L"Impossibile verificare",
          L"Installazione non riuscita", L"Impossibile leggere", L"Verifica dei requisiti",
          L"L'installazione del componente", L"Installazione in corso", L"OneNote o Datebookery"}},
        {L"nb",
         0x1443250E,
         {L"&Lukk", L"Få &hjelp", L"&Prøv på nytt", L"&Start", L"Kunne ikke opprette", L"Kunne ikke kontrollere",
          L"Installasjonen mislyktes", L"Kunne ikke lese", L"Kontrollerer systemkravene",
          L"Installasjonen av Vellumkit", L"Installerer", L"OneNote eller Datebookery"}},
        {L"pl",
         0x4C505C87,
         {L"&Zamknij", L"Uzyskaj po&moc", L"&Ponów próbę", L"&Uruchom", L"Nie można utworzyć", L"Nie można sprawdzić",
          L"Instalacja nie powiodła się", L"Nie można odczytać", L"Sprawdzanie wymagań", L"Instalacja dodatku",
          L"Trwa instalowanie", L"Program OneNote lub Datebookery"}},
        {L"pt-BR",
         0xC1BB52E1,
         {L"&Fechar", L"Obter &ajuda", L"&Tentar de novo", L"&Iniciar", L"Não foi possível criar",
          L"Não foi possível verificar", L"Falha na instalação", L"Não foi possível ler", L"Verificando os requisitos",
          L"A instalação do suplemento", L"Instalando", L"O OneNote ou o Datebookery"}},
        {L"ru",
         0xA712B9BE,
         {L"&Закрыть", L"По&мощь", L"&Повторить", L"&Открыть", L"Не удалось создать", L"Не удалось проверить",
          L"Не удалось выполнить установку", L"Не удалось прочитать", L"Проверка требований", L"Установка надстройки",
          L"Выполняется установка", L"Запущено приложение OneNote или Datebookery"}},
        {L"sk",
         0xCC81E241,
         {L"&Zavrieť", L"Získať &pomoc", L"Skúsiť z&nova", L"&Spustiť", L"Nepodarilo sa vytvoriť",
          L"Nepodarilo sa zistiť", L"Inštalácia zlyhala", L"Nepodarilo sa prečítať", L"Kontrolujú sa požiadavky",
          L"Inštalácia doplnku", L"Prebieha inštalácia", L"Aplikácia OneNote alebo Datebookery"}},
        {L"es",
         0xADD22358,
         {L"&Cerrar", L"Obtener &ayuda", L"&Reintentar", L"&Iniciar", L"No se pudo crear", L"No se pudo comprobar",
          L"Error de instalación", L"No se pudo leer", L"Comprobando los requisitos", L"Se ha completado",
          L"Instalando", L"OneNote o Datebookery"}},
        {L"tr",
         0x8FA70B38,
         {L"&Kapat", L"&Yardım", L"Yeniden &Dene", L"OneNote'u &Başlat", L"Geçici dosya", L"OneNote'un çalışıp",
          L"Yükleme başarısız", L"Yükleme kaynağı", L"Gereksinimler", L"OneNote için Vellumkit", L"Yükleniyor",
          L"OneNote veya Datebookery"}},
        {L"mk",
         0xEF3A32EC,
         {L"&Затвори", L"Побарај по&мош", L"&Обиди се пак", L"&Отвори", L"Не може да се создаде",
          L"Не може да се провери", L"Инсталирањето не успеа", L"Не може да се прочита", L"Се проверуваат",
          L"Инсталирањето на додатокот", L"Се инсталира", L"Апликацијата OneNote или Datebookery"}},
        {L"zh-CN",
         0x6DE2D769,
         {L"关闭", L"帮助", L"重试", L"启动", L"无法创建", L"无法检测", L"安装失败", L"无法读取", L"正在检查",
          L"适用于", L"正在安装", L"OneNote 或 Datebookery"}},
        {L"zh-TW",
         0xF50769BC,
         {L"關閉", L"取得協助", L"重試", L"啟動", L"無法建立", L"無法確認", L"安裝失敗", L"無法讀取", L"正在檢查",
          L"適用於", L"正在安裝", L"OneNote 或 Datebookery"}},
    };
    for (const auto& [code, fingerprint, beginnings] : languages) {
        const Texts texts = TextsOf(code);
        EXPECT_EQ(Fingerprint(texts), fingerprint) << testing::PrintToString(std::wstring(code));
        for (const StringId id : AllIds) {
            for (const StringId other : AllIds)
                EXPECT_EQ(texts[id].starts_with(beginnings[other]), id == other)
                    << testing::PrintToString(texts[id]) << ' '
                    << testing::PrintToString(std::wstring(beginnings[other]));
        }
    }
}

TEST(CzechTexts, HaveTwoCaptionsWithoutMnemonicAndATrailingBlank) {
    EXPECT_EQ(Text(L"cs", StrClose), L"Zavřít");
    EXPECT_EQ(Text(L"cs", StrRetry), L"Opakovat");
    EXPECT_TRUE(Text(L"cs", StrTempFileFailed).ends_with(L". "));
    EXPECT_FALSE(Text(L"cs", StrTempFileFailed).ends_with(L"  "));
}

TEST(FrenchTexts, HaveARetryWithoutArrowAndTwoTrailingBlanks) {
    EXPECT_EQ(Text(L"fr", StrRetry), L"&Réessayer");
    EXPECT_EQ(Text(L"fr", StrInstallFailed), L"Échec de l'installation :  ");
}

TEST(ChineseCaptions, HaveTheirMnemonicInParentheses) {
    EXPECT_EQ(Text(L"zh-CN", StrClose), L"关闭 (&C)");
    EXPECT_EQ(Text(L"zh-CN", StrGetHelp), L"帮助 (&H)");
    EXPECT_EQ(Text(L"zh-CN", StrRetry), L"重试 (&R)");
    EXPECT_EQ(Text(L"zh-TW", StrRetry), L"重試(&R)");
}

INSTANTIATE_TEST_SUITE_P(, EveryLanguage, testing::ValuesIn(SupportedLanguages()), [](const auto& language) {
    std::string name;
    for (const wchar_t character : language.param.code) {
        if (character != L'-')
            name += static_cast<char>(character);
    }
    return name;
});

TEST_P(EveryLanguage, HasTwelveTextsOfItsOwn) {
    const Texts texts = TextsOf(GetParam().code);
    EXPECT_EQ(std::ranges::count(texts, L""), 0);
    if (GetParam().code == L"en")
        return;
    const Texts english = TextsOf(L"en");
    for (const StringId id : AllIds) {
        const bool same = GetParam().code == L"nb" && id == StrStartOneNote; // "&Start OneNote" is Norwegian too
        EXPECT_EQ(texts[id] == english[id], same) << id;
    }
}

TEST_P(EveryLanguage, ShowsDistinctMnemonicsTogether) {
    const wchar_t close = Mnemonic(Text(StrClose));
    const wchar_t start = Mnemonic(Text(StrStartOneNote));
    EXPECT_NE(start, L'\0');
    EXPECT_NE(close, start);
    EXPECT_EQ(close == L'\0', GetParam().code == L"cs");
}

TEST_P(EveryLanguage, NamesTheRetryButtonAsItReads) {
    const std::wstring caption = ReadCaption(Text(StrRetry));
    ASSERT_FALSE(caption.empty());
    EXPECT_NE(Text(StrTempFileFailed).find(caption), std::wstring::npos);
}

TEST_P(EveryLanguage, KeepsTheProductsNames) {
    for (const StringId id : {StrStartOneNote, StrCheckRunningFailed, StrInstallCompleted, StrOneNoteRunning})
        EXPECT_NE(Text(id).find(L"OneNote"), std::wstring::npos) << id;
    EXPECT_NE(Text(StrInstallCompleted).find(L"Vellumkit"), std::wstring::npos);
    EXPECT_NE(Text(StrOneNoteRunning).find(L"Datebookery"), std::wstring::npos);
}

TEST_P(EveryLanguage, HeadsTheErrorWithAColon) {
    std::wstring heading = Text(StrInstallFailed);
    heading.erase(heading.find_last_not_of(L' ') + 1);
    EXPECT_TRUE(heading.ends_with(L':') || heading.ends_with(L'：'));
}

TEST_P(EveryLanguage, HasOnlyPlainBlanksAndNoneThatIsStray) {
    for (const StringId id : AllIds) {
        const std::wstring text = Text(id);
        EXPECT_EQ(text.find_first_of(L"\x00A0\x202F\x3000\t\n"), std::wstring::npos) << id;
        const bool quoted = (GetParam().code == L"cs" && id == StrTempFileFailed) ||
                            (GetParam().code == L"fr" && id == StrInstallFailed);
        EXPECT_EQ(text.ends_with(L' '), quoted) << id;
        EXPECT_FALSE(text.starts_with(L' ')) << id;
    }
}
