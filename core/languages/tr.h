#pragma once

#include <array>

/// Turkish, in the order of `StringId`.
inline constexpr std::array Turkish{
    /* StrClose */ L"&Kapat",
    /* StrGetHelp */ L"&Yardım Al",
    /* StrRetry */ L"Yeniden &Dene >",
    /* StrStartOneNote */ L"OneNote'u &Başlat",
    /* StrTempFileFailed */
    L"Geçici dosya oluşturulamadı. Yeterli disk alanı olduğundan emin olun ve ardından Yeniden Dene düğmesine tıklayın.",
    /* StrCheckRunningFailed */ L"OneNote'un çalışıp çalışmadığı denetlenemedi.",
    /* StrInstallFailed */ L"Yükleme başarısız oldu:",
    /* StrReadResourceFailed */ L"Yükleme kaynağı okunamadı.",
    /* StrCheckingRequirements */ L"Gereksinimler denetleniyor...",
    /* StrInstallCompleted */ L"OneNote için Vellumkit eklentisinin yüklenmesi tamamlandı.",
    /* StrInstalling */ L"Yükleniyor. Lütfen bekleyin...",
    /* StrOneNoteRunning */
    L"OneNote veya Datebookery çalışıyor. Devam etmeden önce lütfen her iki uygulamayı da kapatın. Az önce kapattıysanız biraz bekleyip yeniden deneyin.",
};
