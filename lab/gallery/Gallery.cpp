// Shows the installer window in each state and language and saves what the screen shows as PNG files:
//
//     gallery.exe FOLDER LANGUAGE...
//
// saves FOLDER\de-checking.png and so on. The window, its painting and its buttons are the installer's own. Returns 1
// without languages, without a window, and when a picture can't be saved.

#include "app/DpiAwareness.h"
#include "app/ErrorTexts.h"
#include "core/ComError.h"
#include "core/Launch.h"
#include "core/LocalizedStrings.h"
#include "install/ScreenState.h"
#include "install/WorkerSignals.h"
#include "lab/gallery/ScreenPicture.h"
#include "ui/Fonts.h"
#include "ui/InstallerWindow.h"
#include "ui/Logo.h"

#include <algorithm>
#include <string>

namespace {

struct Screen {
    const wchar_t* name;
    ScreenStatus status;
    /// Shown by `Failed`.
    HRESULT error;
};

constexpr Screen Screens[] = {
    {L"checking", ScreenStatus::Checking, S_OK},
    {L"installing", ScreenStatus::Installing, S_OK},
    {L"failed-read-resource", ScreenStatus::Failed, ErrorReadResource},
    {L"failed-temporary-file", ScreenStatus::Failed, ErrorTempFile},
    {L"completed", ScreenStatus::Completed, S_OK},
};

void DispatchAll() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
}

void Show(const Screen& screen) {
    SetErrorText(GetLocalizedString(StrInstallFailed) + L"\n\n" + ComErrorText(_com_error(screen.error)));
    ApplyScreenState(ScreenStateOf(screen.status, 0));
    DispatchAll();
    GdiFlush();
    Sleep(200); // what is drawn may reach the screen a little later
    DispatchAll();
}

bool SavePicture(const std::wstring& file) {
    RECT area{};
    GetWindowRect(MainWindow, &area);
    return SaveScreen(area, file);
}

bool SaveLanguage(const std::wstring& folder, const std::wstring& language) {
    LoadLocalizedStrings(language);
    FillCustomErrorTexts();
    return std::ranges::all_of(Screens, [&](const Screen& screen) {
        Show(screen);
        return SavePicture(folder + L'\\' + language + L'-' + screen.name + L".png");
    });
}

} // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, wchar_t* /*commandLine*/, int /*show*/) {
    SetDpiAwareness();
    InstanceHandle = instance;
    StartGraphics();
    MakeFonts();
    LoadLogo();
    if (__argc < 3 || !CreateInstallerWindow())
        return 1;
    for (int i = 2; i < __argc; ++i) {
        if (!SaveLanguage(__wargv[1], __wargv[i]))
            return 1;
    }
    return 0;
}
