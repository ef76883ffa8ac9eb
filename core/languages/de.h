#pragma once

#include <array>

/// German, in the order of `StringId`.
inline constexpr std::array German{
    /* StrClose */ L"&Schließen",
    /* StrGetHelp */ L"&Hilfe erhalten",
    /* StrRetry */ L"W&iederholen >",
    /* StrStartOneNote */ L"&OneNote starten",
    /* StrTempFileFailed */
    L"Fehler beim Erzeugen einer Temporärdatei. Stellen Sie sicher, dass ausreichend Speicherplatz auf der Platte vorhanden ist und klicken Sie auf Wiederholen",
    /* StrCheckRunningFailed */ L"Fehler bei der Prüfung ob OneNote läuft oder nicht.",
    /* StrInstallFailed */ L"Installation fehlgeschlagen:",
    /* StrReadResourceFailed */ L"Fehler beim Lesen aus der Installationsressource.",
    /* StrCheckingRequirements */ L"Prüfe Systemvoraussetzungen...",
    /* StrInstallCompleted */ L"Die Installation des Vellumkit Add-Ins für OneNote ist abgeschlossen.",
    /* StrInstalling */ L"Installieren. Bitte warten...",
    /* StrOneNoteRunning */
    L"OneNote oder Datebookery läuft gerade. Bitte schließen Sie beide bevor Sie weitermachen. Wenn Sie sie gerade geschlossen haben, warten Sie einen Moment und versuchen Sie es dann erneut.",
};
