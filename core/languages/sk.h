#pragma once

#include <array>

/// Slovak, in the order of `StringId`.
inline constexpr std::array Slovak{
    /* StrClose */ L"&Zavrieť",
    /* StrGetHelp */ L"Získať &pomoc",
    /* StrRetry */ L"Skúsiť z&nova >",
    /* StrStartOneNote */ L"&Spustiť OneNote",
    /* StrTempFileFailed */
    L"Nepodarilo sa vytvoriť dočasný súbor. Skontrolujte, či máte na disku dostatok miesta, a potom kliknite na tlačidlo Skúsiť znova.",
    /* StrCheckRunningFailed */ L"Nepodarilo sa zistiť, či je aplikácia OneNote spustená.",
    /* StrInstallFailed */ L"Inštalácia zlyhala:",
    /* StrReadResourceFailed */ L"Nepodarilo sa prečítať inštalačný prostriedok.",
    /* StrCheckingRequirements */ L"Kontrolujú sa požiadavky...",
    /* StrInstallCompleted */ L"Inštalácia doplnku Vellumkit pre OneNote sa dokončila.",
    /* StrInstalling */ L"Prebieha inštalácia. Čakajte, prosím...",
    /* StrOneNoteRunning */
    L"Aplikácia OneNote alebo Datebookery je spustená. Skôr než budete pokračovať, zavrite obe aplikácie. Ak ste ich práve zavreli, chvíľu počkajte a skúste to znova.",
};
