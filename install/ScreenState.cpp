#include "install/ScreenState.h"

#include "core/LocalizedStrings.h"

#include <forward_list>
#include <utility>

ScreenState ScreenStateOf(ScreenStatus status, std::int32_t oldFocusIndex) {
    switch (status) {
    case ScreenStatus::Checking:
    case ScreenStatus::Installing:
        break;
    case ScreenStatus::Failed:
        return {.status = status, .primaryEnabled = true, .primaryLabel = LocalizedText(StrRetry), .focusIndex = 0};
    case ScreenStatus::Completed:
        return {.status = status,
                .primaryEnabled = true,
                .secondaryEnabled = true,
                .primaryLabel = LocalizedText(StrClose),
                .secondaryLabel = LocalizedText(StrStartOneNote),
                .focusIndex = 1};
    }
    return {.status = status, .focusIndex = oldFocusIndex};
}

// A plain assignment may be made of stores that cut a field in two.

void StorePendingScreenState(const ScreenState& state) {
    ScreenState& pending = PendingScreenState;
    std::atomic_ref(pending.status).store(state.status);
    std::atomic_ref(pending.primaryEnabled).store(state.primaryEnabled);
    std::atomic_ref(pending.secondaryEnabled).store(state.secondaryEnabled);
    std::atomic_ref(pending.primaryLabel).store(state.primaryLabel);
    std::atomic_ref(pending.secondaryLabel).store(state.secondaryLabel);
    std::atomic_ref(pending.focusIndex).store(state.focusIndex);
}

ScreenState LoadPendingScreenState() {
    ScreenState& pending = PendingScreenState;
    return {.status = std::atomic_ref(pending.status).load(),
            .primaryEnabled = std::atomic_ref(pending.primaryEnabled).load(),
            .secondaryEnabled = std::atomic_ref(pending.secondaryEnabled).load(),
            .primaryLabel = std::atomic_ref(pending.primaryLabel).load(),
            .secondaryLabel = std::atomic_ref(pending.secondaryLabel).load(),
            .focusIndex = std::atomic_ref(pending.focusIndex).load()};
}

void SetErrorText(std::wstring text) {
    static std::forward_list<std::wstring> texts;
    ErrorText = &texts.emplace_front(std::move(text));
}
