#pragma once

#include <array>

/// Dutch, in the order of `StringId`.
inline constexpr std::array Dutch{
    /* StrClose */ L"&Sluiten",
    /* StrGetHelp */ L"&Hulp vragen",
    /* StrRetry */ L"&Opnieuw >",
    /* StrStartOneNote */ L"OneNote s&tarten",
    /* StrTempFileFailed */
    L"Kan geen tijdelijk bestand maken. Zorg dat er voldoende schijfruimte beschikbaar is en klik vervolgens op Opnieuw.",
    /* StrCheckRunningFailed */ L"Kan niet controleren of OneNote actief is.",
    /* StrInstallFailed */ L"De installatie is mislukt:",
    /* StrReadResourceFailed */ L"Kan de installatieresource niet lezen.",
    /* StrCheckingRequirements */ L"Systeemvereisten controleren...",
    /* StrInstallCompleted */ L"De installatie van de Vellumkit-invoegtoepassing voor OneNote is voltooid.",
    /* StrInstalling */ L"Bezig met installeren. Een ogenblik geduld...",
    /* StrOneNoteRunning */
    L"OneNote of Datebookery is actief. Sluit beide programma's voordat je doorgaat. Als je ze net hebt gesloten, wacht dan even en probeer het opnieuw.",
};
