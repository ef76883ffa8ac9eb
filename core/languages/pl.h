#pragma once

#include <array>

/// Polish, in the order of `StringId`.
inline constexpr std::array Polish{
    /* StrClose */ L"&Zamknij",
    /* StrGetHelp */ L"Uzyskaj po&moc",
    /* StrRetry */ L"&Ponów próbę >",
    /* StrStartOneNote */ L"&Uruchom OneNote",
    /* StrTempFileFailed */
    L"Nie można utworzyć pliku tymczasowego. Upewnij się, że na dysku jest wystarczająca ilość miejsca, a następnie kliknij przycisk „Ponów próbę”.",
    /* StrCheckRunningFailed */ L"Nie można sprawdzić, czy program OneNote jest uruchomiony.",
    /* StrInstallFailed */ L"Instalacja nie powiodła się:",
    /* StrReadResourceFailed */ L"Nie można odczytać zasobu instalacyjnego.",
    /* StrCheckingRequirements */ L"Sprawdzanie wymagań...",
    /* StrInstallCompleted */ L"Instalacja dodatku Vellumkit do programu OneNote została ukończona.",
    /* StrInstalling */ L"Trwa instalowanie. Czekaj...",
    /* StrOneNoteRunning */
    L"Program OneNote lub Datebookery jest uruchomiony. Przed kontynuowaniem zamknij oba programy. Jeśli zostały właśnie zamknięte, poczekaj chwilę i ponów próbę.",
};
