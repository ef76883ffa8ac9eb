#pragma once

#include <array>

/// Traditional Chinese, in the order of `StringId`.
inline constexpr std::array TraditionalChinese{
    /* StrClose */ L"關閉(&C)",
    /* StrGetHelp */ L"取得協助(&H)",
    /* StrRetry */ L"重試(&R)",
    /* StrStartOneNote */ L"啟動 OneNote(&S)",
    /* StrTempFileFailed */ L"無法建立暫存檔。請確認磁碟空間是否足夠，然後按一下 [重試]。",
    /* StrCheckRunningFailed */ L"無法確認 OneNote 是否正在執行。",
    /* StrInstallFailed */ L"安裝失敗：",
    /* StrReadResourceFailed */ L"無法讀取安裝資源。",
    /* StrCheckingRequirements */ L"正在檢查系統需求...",
    /* StrInstallCompleted */ L"適用於 OneNote 的 Vellumkit 增益集已安裝完成。",
    /* StrInstalling */ L"正在安裝，請稍候...",
    /* StrOneNoteRunning */
    L"OneNote 或 Datebookery 正在執行，請先將其關閉再繼續。如果您剛關閉這些程式，請稍候片刻，然後再試一次。",
};
