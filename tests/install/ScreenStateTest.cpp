#include "install/ScreenState.h"

#include "core/LocalizedStrings.h"

#include <cstddef>
#include <gtest/gtest.h>
#include <vector>

namespace {

// Before any test changes it.
const ScreenState PendingAtStart = PendingScreenState;

struct Screen {
    const char* name;
    const wchar_t* language;
    ScreenStatus status;
    const wchar_t* primary; // null for a button that is not there
    const wchar_t* secondary;
    int focusIndex;
};

constexpr int FocusBefore = 7;

class Screens : public testing::TestWithParam<Screen> {};

const wchar_t* Label(const wchar_t* caption) {
    return caption != nullptr ? caption : L"";
}

} // namespace

TEST(ScreenStatuses, CountFromZero) {
    EXPECT_EQ(static_cast<std::int32_t>(ScreenStatus::Checking), 0);
    EXPECT_EQ(static_cast<std::int32_t>(ScreenStatus::Installing), 1);
    EXPECT_EQ(static_cast<std::int32_t>(ScreenStatus::Failed), 2);
    EXPECT_EQ(static_cast<std::int32_t>(ScreenStatus::Completed), 3);
    EXPECT_EQ(sizeof(ScreenStatus), 4U);
}

TEST(ScreenStates, HaveTheirFieldsInOrder) {
    EXPECT_EQ(offsetof(ScreenState, status), 0U);
    EXPECT_EQ(offsetof(ScreenState, primaryEnabled), 4U);
    EXPECT_EQ(offsetof(ScreenState, secondaryEnabled), 5U);
    EXPECT_EQ(offsetof(ScreenState, primaryLabel), 8U);
    EXPECT_EQ(offsetof(ScreenState, secondaryLabel), 16U);
    EXPECT_EQ(offsetof(ScreenState, focusIndex), 24U);
    EXPECT_EQ(sizeof ScreenState::focusIndex, 4U);
}

TEST(ScreenStates, AreCheckingWithoutButtonsAtStart) {
    EXPECT_EQ(PendingAtStart.status, ScreenStatus::Checking);
    EXPECT_FALSE(PendingAtStart.primaryEnabled);
    EXPECT_FALSE(PendingAtStart.secondaryEnabled);
    EXPECT_STREQ(PendingAtStart.primaryLabel, L"");
    EXPECT_STREQ(PendingAtStart.secondaryLabel, L"");
    EXPECT_EQ(PendingAtStart.focusIndex, 0);
}

TEST(ScreenStates, AreAppliedByAMessageOfTheirOwn) {
    EXPECT_EQ(WM_APPLYSTATE, 0x500U);
}

INSTANTIATE_TEST_SUITE_P(
    , Screens,
    testing::Values(Screen{"Checking", L"en", ScreenStatus::Checking, nullptr, nullptr, FocusBefore},
                    Screen{"Installing", L"en", ScreenStatus::Installing, nullptr, nullptr, FocusBefore},
                    Screen{"Failed", L"en", ScreenStatus::Failed, L"&Retry >", nullptr, 0},
                    Screen{"Completed", L"en", ScreenStatus::Completed, L"&Close", L"&Start OneNote", 1},
                    Screen{"CheckingInGerman", L"de", ScreenStatus::Checking, nullptr, nullptr, FocusBefore},
                    Screen{"InstallingInGerman", L"de", ScreenStatus::Installing, nullptr, nullptr, FocusBefore},
                    Screen{"FailedInGerman", L"de", ScreenStatus::Failed, L"W&iederholen >", nullptr, 0},
                    Screen{"CompletedInGerman", L"de", ScreenStatus::Completed, L"&Schließen", L"&OneNote starten", 1}),
    [](const auto& item) { return item.param.name; });

TEST_P(Screens, HaveTheirButtonsAndFocus) {
    LoadLocalizedStrings(GetParam().language);
    const ScreenState state = ScreenStateOf(GetParam().status, FocusBefore);
    EXPECT_EQ(state.status, GetParam().status);
    EXPECT_EQ(state.primaryEnabled, GetParam().primary != nullptr);
    EXPECT_EQ(state.secondaryEnabled, GetParam().secondary != nullptr);
    EXPECT_STREQ(state.primaryLabel, Label(GetParam().primary));
    EXPECT_STREQ(state.secondaryLabel, Label(GetParam().secondary));
    EXPECT_EQ(state.focusIndex, GetParam().focusIndex);
}

TEST(FailureTexts, StayWhereTheyAreWhenAnotherOneIsSet) {
    std::vector<const std::wstring*> texts;
    std::vector<const wchar_t*> characters;
    for (int number = 0; number < 1000; ++number) {
        SetErrorText(L"Some error that is too long to stand in the string itself: " + std::to_wstring(number));
        texts.push_back(ErrorText.load());
        characters.push_back(ErrorText.load()->c_str());
    }
    for (std::size_t number = 0; number < texts.size(); ++number) {
        EXPECT_EQ(texts[number]->c_str(), characters[number]);
        EXPECT_TRUE(texts[number]->ends_with(L": " + std::to_wstring(number)));
    }
    ErrorText = nullptr;
}

TEST(ScreenStates, AreStoredAndLoadedWhole) {
    const ScreenState state{.status = ScreenStatus::Completed,
                            .primaryEnabled = true,
                            .secondaryEnabled = true,
                            .primaryLabel = L"primary",
                            .secondaryLabel = L"secondary",
                            .focusIndex = 1};
    StorePendingScreenState(state);
    const ScreenState loaded = LoadPendingScreenState();
    StorePendingScreenState({});
    EXPECT_EQ(loaded.status, state.status);
    EXPECT_TRUE(loaded.primaryEnabled);
    EXPECT_TRUE(loaded.secondaryEnabled);
    EXPECT_EQ(loaded.primaryLabel, state.primaryLabel);
    EXPECT_EQ(loaded.secondaryLabel, state.secondaryLabel);
    EXPECT_EQ(loaded.focusIndex, 1);
}
