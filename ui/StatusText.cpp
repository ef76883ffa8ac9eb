#include "ui/StatusText.h"

#include "core/LocalizedStrings.h"

std::wstring_view StatusText(ScreenStatus status) {
    switch (status) {
    case ScreenStatus::Checking:
        return LocalizedText(StrCheckingRequirements);
    case ScreenStatus::Installing:
        return LocalizedText(StrInstalling);
    case ScreenStatus::Failed:
        return ErrorText != nullptr ? *ErrorText.load() : std::wstring_view();
    case ScreenStatus::Completed:
        return LocalizedText(StrInstallCompleted);
    }
    return {};
}
