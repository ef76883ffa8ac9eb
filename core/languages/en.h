#pragma once

#include <array>

/// English, in the order of `StringId`.
inline constexpr std::array English{
    /* StrClose */ L"&Close",
    /* StrGetHelp */ L"Get &Help",
    /* StrRetry */ L"&Retry >",
    /* StrStartOneNote */ L"&Start OneNote",
    /* StrTempFileFailed */
    L"Failed to create temporary file. Make sure you have enough disk space and then click Retry.",
    /* StrCheckRunningFailed */ L"Failed to check whether OneNote is running or not.",
    /* StrInstallFailed */ L"Installation failed:",
    /* StrReadResourceFailed */ L"Failed to read installation resource.",
    /* StrCheckingRequirements */ L"Checking requirements...",
    /* StrInstallCompleted */ L"Installation of Vellumkit add-in for OneNote is completed.",
    /* StrInstalling */ L"Installing. Please wait...",
    /* StrOneNoteRunning */
    L"OneNote or Datebookery is running, please close them before continuing. If you have just closed, please wait a bit and retry.",
};
