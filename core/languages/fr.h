#pragma once

#include <array>

/// French, in the order of `StringId`.
inline constexpr std::array French{
    /* StrClose */ L"&Fermer",
    /* StrGetHelp */ L"Obtenir de l'&aide",
    /* StrRetry */ L"&Réessayer",
    /* StrStartOneNote */ L"&Lancer OneNote",
    /* StrTempFileFailed */
    L"Impossible de créer un fichier temporaire. Vérifiez que l'espace disque est suffisant, puis cliquez sur Réessayer.",
    /* StrCheckRunningFailed */ L"Impossible de vérifier si OneNote est en cours d'exécution.",
    /* StrInstallFailed */ L"Échec de l'installation :  ",
    /* StrReadResourceFailed */ L"Impossible de lire la ressource d'installation.",
    /* StrCheckingRequirements */ L"Vérification de la configuration requise...",
    /* StrInstallCompleted */ L"L'installation du complément Vellumkit pour OneNote est terminée.",
    /* StrInstalling */ L"Installation en cours. Veuillez patienter...",
    /* StrOneNoteRunning */
    L"OneNote ou Datebookery est en cours d'exécution. Fermez ces deux applications avant de continuer. Si vous venez de les fermer, patientez un instant, puis réessayez.",
};
