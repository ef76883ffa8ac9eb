#pragma once

#include <array>

/// Brazilian Portuguese, in the order of `StringId`.
inline constexpr std::array BrazilianPortuguese{
    /* StrClose */ L"&Fechar",
    /* StrGetHelp */ L"Obter &ajuda",
    /* StrRetry */ L"&Tentar de novo >",
    /* StrStartOneNote */ L"&Iniciar o OneNote",
    /* StrTempFileFailed */
    L"Não foi possível criar um arquivo temporário. Verifique se há espaço em disco suficiente e clique em Tentar de novo.",
    /* StrCheckRunningFailed */ L"Não foi possível verificar se o OneNote está em execução.",
    /* StrInstallFailed */ L"Falha na instalação:",
    /* StrReadResourceFailed */ L"Não foi possível ler o recurso de instalação.",
    /* StrCheckingRequirements */ L"Verificando os requisitos...",
    /* StrInstallCompleted */ L"A instalação do suplemento Vellumkit para o OneNote foi concluída.",
    /* StrInstalling */ L"Instalando. Aguarde...",
    /* StrOneNoteRunning */
    L"O OneNote ou o Datebookery está em execução. Feche os dois aplicativos antes de continuar. Se você acabou de fechá-los, aguarde um pouco e tente de novo.",
};
