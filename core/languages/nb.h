#pragma once

#include <array>

/// Norwegian Bokmål, in the order of `StringId`.
inline constexpr std::array Norwegian{
    /* StrClose */ L"&Lukk",
    /* StrGetHelp */ L"Få &hjelp",
    /* StrRetry */ L"&Prøv på nytt >",
    /* StrStartOneNote */ L"&Start OneNote",
    /* StrTempFileFailed */
    L"Kunne ikke opprette en midlertidig fil. Kontroller at du har nok ledig diskplass, og klikk deretter på «Prøv på nytt».",
    /* StrCheckRunningFailed */ L"Kunne ikke kontrollere om OneNote kjører.",
    /* StrInstallFailed */ L"Installasjonen mislyktes:",
    /* StrReadResourceFailed */ L"Kunne ikke lese installasjonsressursen.",
    /* StrCheckingRequirements */ L"Kontrollerer systemkravene...",
    /* StrInstallCompleted */ L"Installasjonen av Vellumkit-tillegget for OneNote er fullført.",
    /* StrInstalling */ L"Installerer. Vent litt...",
    /* StrOneNoteRunning */
    L"OneNote eller Datebookery kjører. Lukk begge programmene før du fortsetter. Vent litt og prøv på nytt hvis du nettopp har lukket dem.",
};
