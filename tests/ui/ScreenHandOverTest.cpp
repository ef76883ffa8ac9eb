// The window applies screens while the worker hands over others: neither waits for the other.

#include "install/ScreenState.h"
#include "install/WorkerSignals.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/WindowFixture.h"

#include <algorithm>
#include <atomic>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

class ScreenHandOver : public WindowFixture {};

constexpr ScreenStatus AllStatuses[] = {ScreenStatus::Checking, ScreenStatus::Installing, ScreenStatus::Failed,
                                        ScreenStatus::Completed};

/// Of all states.
constexpr std::wstring_view AllCaptions[] = {L"", L"&Retry >", L"&Close", L"&Start OneNote"};

/// A failure's text, whose length and characters tell that it is whole.
std::wstring FailureOf(wchar_t character) {
    return std::wstring().append(character, character);
}

bool IsOneThatWasSet(const std::wstring& text) {
    return std::ranges::find(AllCaptions, text) != std::end(AllCaptions) || text == FailureOf(text[0]);
}

} // namespace

TEST_F(ScreenHandOver, ReadsWholeTextsWhileTheWorkerOverwritesTheRecord) {
    static int captions;
    static std::vector<std::wstring> torn;
    captions = 0;
    torn.clear();
    static unsigned reads;
    reads = 0;
    static const auto Read = [](const wchar_t* text) {
        const std::wstring seen = text;
        if (++reads % 256 == 0)
            SwitchToThread(); // the worker may overwrite what is being read; on a busy machine this takes long
        if (!IsOneThatWasSet(seen) || seen != text)
            torn.push_back(seen);
    };
    const ImportPatch<decltype(SetWindowTextW)> caption("SetWindowTextW", [](HWND, LPCWSTR text) -> BOOL {
        Read(text);
        ++captions;
        return TRUE;
    });
    // These take most of the time, and no text.
    const ImportPatch<decltype(EnableWindow)> enable("EnableWindow", [](HWND, BOOL) -> BOOL { return TRUE; });
    const ImportPatch<decltype(ShowWindow)> show("ShowWindow", [](HWND, int) -> BOOL { return TRUE; });
    const ImportPatch<decltype(SetFocus)> focus("SetFocus", [](HWND) -> HWND { return nullptr; });
    const ImportPatch<decltype(InvalidateRect)> invalidate("InvalidateRect",
                                                           [](HWND, const RECT*, BOOL) -> BOOL { return TRUE; });

    SetErrorText(FailureOf(L'a'));
    std::atomic<bool> enough = false;
    std::thread worker([&enough] {
        for (unsigned pass = 0; !enough; ++pass) {
            const ScreenStatus status = AllStatuses[pass % std::size(AllStatuses)];
            if (status == ScreenStatus::Failed)
                SetErrorText(FailureOf(static_cast<wchar_t>(L'a' + pass % 26)));
            StorePendingScreenState(ScreenStateOf(status, LoadPendingScreenState().focusIndex));
            PostMessageW(MainWindow, WM_APPLYSTATE, 0, 0); // fails when too many wait
        }
    });
    while (captions < 2 * 20000 && torn.empty()) {
        SendMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
        Read(ErrorText.load()->c_str());
    }
    enough = true;
    worker.join();
    MSG message{};
    while (PeekMessageW(&message, MainWindow, WM_APPLYSTATE, WM_APPLYSTATE, PM_REMOVE)) {
        // What was posted meanwhile, thousands of times, is done already.
    }
    EXPECT_EQ(torn, std::vector<std::wstring>{});
}
