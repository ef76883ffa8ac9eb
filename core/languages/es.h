#pragma once

#include <array>

/// Spanish, in the order of `StringId`.
inline constexpr std::array Spanish{
    /* StrClose */ L"&Cerrar",
    /* StrGetHelp */ L"Obtener &ayuda",
    /* StrRetry */ L"&Reintentar >",
    /* StrStartOneNote */ L"&Iniciar OneNote",
    /* StrTempFileFailed */
    L"No se pudo crear un archivo temporal. Asegúrese de que hay suficiente espacio en disco y, a continuación, haga clic en Reintentar.",
    /* StrCheckRunningFailed */ L"No se pudo comprobar si OneNote se está ejecutando.",
    /* StrInstallFailed */ L"Error de instalación:",
    /* StrReadResourceFailed */ L"No se pudo leer el recurso de instalación.",
    /* StrCheckingRequirements */ L"Comprobando los requisitos...",
    /* StrInstallCompleted */ L"Se ha completado la instalación del complemento Vellumkit para OneNote.",
    /* StrInstalling */ L"Instalando. Espere un momento...",
    /* StrOneNoteRunning */
    L"OneNote o Datebookery se está ejecutando. Cierre ambas aplicaciones antes de continuar. Si acaba de cerrarlas, espere un momento y vuelva a intentarlo.",
};
