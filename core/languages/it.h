#pragma once

#include <array>

/// Italian, in the order of `StringId`.
inline constexpr std::array Italian{
    /* StrClose */ L"&Chiudi",
    /* StrGetHelp */ L"&Ottieni assistenza",
    /* StrRetry */ L"&Riprova >",
    /* StrStartOneNote */ L"&Avvia OneNote",
    /* StrTempFileFailed */
    L"Impossibile creare un file temporaneo. Verificare che lo spazio su disco sia sufficiente, quindi fare clic su Riprova.",
    /* StrCheckRunningFailed */ L"Impossibile verificare se OneNote è in esecuzione.",
    /* StrInstallFailed */ L"Installazione non riuscita:",
    /* StrReadResourceFailed */ L"Impossibile leggere la risorsa di installazione.",
    /* StrCheckingRequirements */ L"Verifica dei requisiti in corso...",
    /* StrInstallCompleted */ L"L'installazione del componente aggiuntivo Vellumkit per OneNote è stata completata.",
    /* StrInstalling */ L"Installazione in corso. Attendere...",
    /* StrOneNoteRunning */
    L"OneNote o Datebookery è in esecuzione. Chiudere entrambe le applicazioni prima di continuare. Se sono state appena chiuse, attendere qualche istante e riprovare.",
};
