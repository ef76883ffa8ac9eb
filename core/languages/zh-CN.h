#pragma once

#include <array>

/// Simplified Chinese, in the order of `StringId`.
inline constexpr std::array SimplifiedChinese{
    /* StrClose */ L"关闭 (&C)",
    /* StrGetHelp */ L"帮助 (&H)",
    /* StrRetry */ L"重试 (&R)",
    /* StrStartOneNote */ L"启动 OneNote (&S)",
    /* StrTempFileFailed */ L"无法创建临时文件。请确保磁盘空间充足，然后单击“重试”。",
    /* StrCheckRunningFailed */ L"无法检测 OneNote 是否正在运行。",
    /* StrInstallFailed */ L"安装失败：",
    /* StrReadResourceFailed */ L"无法读取安装资源。",
    /* StrCheckingRequirements */ L"正在检查系统要求...",
    /* StrInstallCompleted */ L"适用于 OneNote 的 Vellumkit 加载项已安装完成。",
    /* StrInstalling */ L"正在安装，请稍候...",
    /* StrOneNoteRunning */
    L"OneNote 或 Datebookery 正在运行，请先将其关闭，然后再继续。如果您刚刚关闭了这些程序，请稍等片刻，然后重试。",
};
