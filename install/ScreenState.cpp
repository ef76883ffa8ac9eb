#include "install/ScreenState.h"

#include "core/LocalizedStrings.h"

#include <forward_list>
#include <utility>

ScreenState ScreenStateOf(ScreenStatus status, std::int32_t oldFocusIndex) {
    switch (status) {
    case ScreenStatus::Failed:
        return {.status = status, .primaryEnabled = true, .primaryLabel = LocalizedText(StrRetry), .focusIndex = 0};
    case ScreenStatus::Completed:
        return {.status = status,
                .primaryEnabled = true,
                .secondaryEnabled = true,
                .primaryLabel = LocalizedText(StrClose),
                .secondaryLabel = LocalizedText(StrStartOneNote),
                .focusIndex = 1};
    default:
        return {.status = status, .focusIndex = oldFocusIndex};
    }
}

void SetErrorText(std::wstring text) {
    static std::forward_list<std::wstring> texts;
    ErrorText = &texts.emplace_front(std::move(text));
}
