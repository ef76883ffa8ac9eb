// Shows the installer window in each state and language and saves what the screen shows as PNG files:
//
//     gallery.exe FOLDER LANGUAGE...
//     gallery.exe /keyboard FOLDER LANGUAGE...
//
// saves FOLDER\de-checking.png and so on, and with /keyboard, for each button that has the focus,
// FOLDER\de-retry.png and so on, with the signs that Windows shows to who uses the keyboard. The window, its painting
// and its buttons are the installer's own. Returns 1 without languages, without a window, and when a picture can't be
// saved.

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
#include <span>
#include <string>
#include <string_view>

namespace {

struct Screen {
    const wchar_t* name = L"";
    ScreenStatus status = ScreenStatus::Checking;
    /// Shown by `Failed`.
    HRESULT error = S_OK;
    /// The button that has the focus instead of the state's own.
    const HWND* focus = nullptr;
};

constexpr Screen Screens[] = {
    {L"checking", ScreenStatus::Checking, S_OK},
    {L"installing", ScreenStatus::Installing, S_OK},
    {L"failed-read-resource", ScreenStatus::Failed, ErrorReadResource},
    {L"failed-temporary-file", ScreenStatus::Failed, ErrorTempFile},
    {L"completed", ScreenStatus::Completed, S_OK},
};

constexpr Screen KeyboardScreens[] = {
    {L"retry", ScreenStatus::Failed, ErrorTempFile},
    {L"start-onenote", ScreenStatus::Completed, S_OK},
    {L"close", ScreenStatus::Completed, S_OK, &PrimaryButton},
};

void DispatchAll() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&message);
}

void Show(const Screen& screen) {
    SetErrorText(GetLocalizedString(StrInstallFailed) + L"\n\n" + ComErrorText(_com_error(screen.error)));
    ApplyScreenState(ScreenStateOf(screen.status, 0));
    if (screen.focus != nullptr)
        SetFocus(*screen.focus);
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

bool SaveLanguage(std::span<const Screen> screens, const std::wstring& folder, const std::wstring& language) {
    LoadLocalizedStrings(language);
    FillCustomErrorTexts();
    return std::ranges::all_of(screens, [&](const Screen& screen) {
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
    std::span<wchar_t*> arguments(__wargv + 1, static_cast<std::size_t>(__argc - 1));
    const bool keyboard = !arguments.empty() && arguments.front() == std::wstring_view(L"/keyboard");
    if (keyboard)
        arguments = arguments.subspan(1);
    if (arguments.size() < 2 || !CreateInstallerWindow())
        return 1;
    if (keyboard) // as the first key does
        SendMessageW(MainWindow, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL), 0);
    const auto screens = keyboard ? std::span<const Screen>(KeyboardScreens) : std::span<const Screen>(Screens);
    const bool saved = std::ranges::all_of(arguments.subspan(1), [&](const wchar_t* language) {
        return SaveLanguage(screens, arguments.front(), language);
    });
    return saved ? 0 : 1;
}
