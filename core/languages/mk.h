#pragma once

#include <array>

/// Macedonian, in the order of `StringId`.
inline constexpr std::array Macedonian{
    /* StrClose */ L"&Затвори",
    /* StrGetHelp */ L"Побарај по&мош",
    /* StrRetry */ L"&Обиди се пак >",
    /* StrStartOneNote */ L"&Отвори OneNote",
    /* StrTempFileFailed */
    L"Не може да се создаде привремена датотека. Проверете дали имате доволно простор на дискот, а потоа кликнете на „Обиди се пак“.",
    /* StrCheckRunningFailed */ L"Не може да се провери дали е стартувана апликацијата OneNote.",
    /* StrInstallFailed */ L"Инсталирањето не успеа:",
    /* StrReadResourceFailed */ L"Не може да се прочита инсталацискиот ресурс.",
    /* StrCheckingRequirements */ L"Се проверуваат системските барања...",
    /* StrInstallCompleted */ L"Инсталирањето на додатокот Vellumkit за OneNote е завршено.",
    /* StrInstalling */ L"Се инсталира. Почекајте...",
    /* StrOneNoteRunning */
    L"Апликацијата OneNote или Datebookery е стартувана. Затворете ги двете апликации пред да продолжите. Ако штотуку сте ги затвориле, почекајте малку и обидете се повторно.",
};
