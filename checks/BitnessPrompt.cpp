#include "checks/BitnessPrompt.h"

#include "core/ComError.h"
#include "core/Launch.h"
#include "core/Product.h"
#include "core/SystemLibrary.h"

#include <comdef.h>
#include <commctrl.h>
#include <shellapi.h>

#include <array>

namespace {

// No "?" behind the path: the web site knows the download by exactly this address.
constexpr wchar_t DownloadAddress[] =
    L"https://" VELLUMKIT_WEB_HOST "/downloadFile&fv=" VELLUMKIT_VERSION_TEXT "&file=VellumkitInstaller.x86.exe";
constexpr wchar_t HelpAddress[] = L"https://" VELLUMKIT_WEB_HOST "/how-to/find-office-bitness";

enum Button { ButtonDownload32 = 100, ButtonContinue64 = 101, ButtonHowToFind = 102 };

/// Looked up when it is called: version 5 of the library, which Windows may have put in the place of version 6, has no
/// task dialog, and nobody but a user who is asked needs one.
HRESULT CallTaskDialogIndirect(const TASKDIALOGCONFIG& config, int& pressed) {
    const HMODULE library = LoadSystemLibrary(L"comctl32.dll");
    auto* const function =
        library != nullptr ? FindFunction<decltype(TaskDialogIndirect)>(library, "TaskDialogIndirect") : nullptr;
    if (function == nullptr)
        ThrowWin32Error(GetLastError());
    return function(&config, &pressed, nullptr, nullptr);
}

/// Returns the button that was pressed, or what else closed the dialog. Its texts are not among the translated ones,
/// and the blank at the end of the instruction belongs to it.
int ShowPrompt() {
    constexpr std::array Buttons{
        TASKDIALOG_BUTTON{ButtonDownload32, L"Download 32-bit Vellumkit"},
        TASKDIALOG_BUTTON{ButtonContinue64, L"No I have 64-bit OneNote, continue 64-bit installation"},
        TASKDIALOG_BUTTON{ButtonHowToFind, L"Show me how to find which version of OneNote I have"},
    };
    TASKDIALOGCONFIG config{};
    config.cbSize = sizeof config;
    config.hInstance = InstanceHandle;                              // and no hwndParent: there is no window yet
    config.dwFlags = TDF_ENABLE_HYPERLINKS | TDF_USE_COMMAND_LINKS; // the first has no effect: no text has a link
    config.pszWindowTitle = L"Vellumkit Installer";
    config.pszMainIcon = MAKEINTRESOURCEW(ApplicationIcon);
    config.pszMainInstruction = L"You are installing 64-bit version of Vellumkit, but it appears that you may have "
                                L"32-bit version of OneNote installed. ";
    config.cButtons = Buttons.size();
    config.pButtons = Buttons.data();
    config.nDefaultButton = ButtonDownload32;
    int pressed = 0;
    _com_util::CheckError(CallTaskDialogIndirect(config, pressed));
    return pressed;
}

void OpenInBrowser(const wchar_t* address) {
    ShellExecuteW(nullptr, nullptr, address, nullptr, nullptr, SW_SHOW);
}

} // namespace

bool ConfirmBitness() {
    for (;;) {
        switch (ShowPrompt()) {
        case ButtonDownload32:
            OpenInBrowser(DownloadAddress);
            return false;
        case ButtonHowToFind:
            OpenInBrowser(HelpAddress);
            break;
        default:
            return true;
        }
    }
}
