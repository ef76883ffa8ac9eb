#pragma once

#include <array>

/// Czech, in the order of `StringId`.
inline constexpr std::array Czech{
    /* StrClose */ L"Zavřít",
    /* StrGetHelp */ L"Získat &pomoc",
    /* StrRetry */ L"Opakovat",
    /* StrStartOneNote */ L"&Spustit OneNote",
    /* StrTempFileFailed */
    L"Nepodařilo se vytvořit dočasný soubor. Zkontrolujte, jestli máte na disku dostatek místa, a potom klikněte na tlačítko Opakovat. ",
    /* StrCheckRunningFailed */ L"Nepodařilo se zjistit, jestli je aplikace OneNote spuštěná.",
    /* StrInstallFailed */ L"Instalace se nezdařila:",
    /* StrReadResourceFailed */ L"Nepodařilo se načíst instalační prostředek.",
    /* StrCheckingRequirements */ L"Kontrolují se požadavky...",
    /* StrInstallCompleted */ L"Instalace doplňku Vellumkit pro OneNote byla dokončena.",
    /* StrInstalling */ L"Probíhá instalace. Čekejte prosím...",
    /* StrOneNoteRunning */
    L"Aplikace OneNote nebo Datebookery je spuštěná. Než budete pokračovat, zavřete prosím obě aplikace. Pokud jste je právě zavřeli, chvíli počkejte a zkuste to znovu.",
};
