#pragma once

#include <array>

/// Russian, in the order of `StringId`.
inline constexpr std::array Russian{
    /* StrClose */ L"&Закрыть",
    /* StrGetHelp */ L"По&мощь",
    /* StrRetry */ L"&Повторить >",
    /* StrStartOneNote */ L"&Открыть OneNote",
    /* StrTempFileFailed */
    L"Не удалось создать временный файл. Убедитесь, что на диске достаточно места, и нажмите кнопку «Повторить».",
    /* StrCheckRunningFailed */ L"Не удалось проверить, запущено ли приложение OneNote.",
    /* StrInstallFailed */ L"Не удалось выполнить установку:",
    /* StrReadResourceFailed */ L"Не удалось прочитать ресурс установщика.",
    /* StrCheckingRequirements */ L"Проверка требований к системе...",
    /* StrInstallCompleted */ L"Установка надстройки Vellumkit для OneNote завершена.",
    /* StrInstalling */ L"Выполняется установка. Подождите...",
    /* StrOneNoteRunning */
    L"Запущено приложение OneNote или Datebookery. Закройте оба приложения, прежде чем продолжить. Если вы только что их закрыли, немного подождите и повторите попытку.",
};
