// What the installer window does on each message.

#include "ui/InstallerWindow.h"

#include "install/OneNoteAutomation.h"
#include "install/ScreenState.h"
#include "install/WorkerSignals.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/Layouts.h"
#include "tests/support/LiveObjects.h"
#include "tests/support/LogText.h"
#include "tests/support/WindowFixture.h"
#include "ui/Logo.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <string_view>

namespace {

// Before any test changes it.
const ScreenStatus StatusAtStart = CurrentStatus;

constexpr ScreenStatus AllStatuses[] = {ScreenStatus::Checking, ScreenStatus::Installing, ScreenStatus::Failed,
                                        ScreenStatus::Completed};

class InstallerWindow : public WindowFixture {};

struct StateCase {
    const char* name;
    ScreenStatus status;
    const wchar_t* primary;
    const wchar_t* secondary;
    /// What is done to the buttons, in order.
    const wchar_t* calls;
};

constexpr wchar_t NoButton[] = L"primary disabled; primary hidden; primary ; "
                               L"secondary disabled; secondary hidden; secondary ; ";
constexpr wchar_t OneButton[] = L"primary enabled; primary shown; primary &Retry >; primary focused; "
                                L"secondary disabled; secondary hidden; secondary ; ";
constexpr wchar_t TwoButtons[] = L"primary enabled; primary shown; primary &Close; "
                                 L"secondary enabled; secondary shown; secondary &Start OneNote; secondary focused; ";

class State : public InstallerWindow, public testing::WithParamInterface<StateCase> {};

class EachStatus : public InstallerWindow, public testing::WithParamInterface<ScreenStatus> {};

/// A call that painting makes, and what it answers when it fails.
struct PaintingCall {
    const char* function;
    ULONG_PTR failure = Gdiplus::OutOfMemory;
};

class FailedPainting : public InstallerWindow, public testing::WithParamInterface<PaintingCall> {};

std::string NameOf(const testing::TestParamInfo<ScreenStatus>& item) {
    constexpr std::array<const char*, 4> Names{"Checking", "Installing", "Failed", "Completed"};
    return Names.at(static_cast<std::size_t>(item.param));
}

} // namespace

// The states

TEST(InstallerWindowStatus, IsCheckingAtStart) {
    EXPECT_EQ(StatusAtStart, ScreenStatus::Checking);
}

TEST_P(State, HasItsButtonsWhenItIsPosted) {
    const StateCase& item = GetParam();
    for (const ScreenStatus former : AllStatuses) {
        SCOPED_TRACE("after state " + std::to_string(static_cast<int>(former)));
        Show(former);
        Show(item.status);
        EXPECT_EQ(CaptionOf(PrimaryButton), item.primary);
        EXPECT_EQ(CaptionOf(SecondaryButton), item.secondary);
        EXPECT_EQ(IsWindowVisible(PrimaryButton) != FALSE, *item.primary != L'\0');
        EXPECT_EQ(IsWindowVisible(SecondaryButton) != FALSE, *item.secondary != L'\0');
        EXPECT_EQ(IsWindowEnabled(PrimaryButton) != FALSE, *item.primary != L'\0');
        EXPECT_EQ(IsWindowEnabled(SecondaryButton) != FALSE, *item.secondary != L'\0');
    }
}

TEST_P(State, LooksTheSameWhenItIsAppliedAgain) {
    const StateCase& item = GetParam();
    Show(item.status);
    const HWND focus = GetFocus();
    ValidateRect(MainWindow, nullptr);
    SendMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
    RECT repainted{};
    GetUpdateRect(MainWindow, &repainted, FALSE);
    EXPECT_EQ(Area(repainted), LayoutHere().client);
    EXPECT_EQ(GetFocus(), focus);
    EXPECT_EQ(CaptionOf(PrimaryButton), item.primary);
    EXPECT_EQ(CaptionOf(SecondaryButton), item.secondary);
    EXPECT_FALSE(WorkerContinues());
}

TEST_P(State, TellsItsButtonsEverythingEachTimeItIsApplied) {
    static std::wstring calls;
    static const auto Call = [](HWND button, const std::wstring& call) {
        calls += (button == PrimaryButton ? L"primary " : L"secondary ") + call + L"; ";
    };
    const ImportPatch<decltype(EnableWindow)> enable("EnableWindow", [](HWND button, BOOL enabled) -> BOOL {
        Call(button, enabled ? L"enabled" : L"disabled");
        return FALSE;
    });
    const ImportPatch<decltype(ShowWindow)> show("ShowWindow", [](HWND button, int command) -> BOOL {
        Call(button, command == SW_SHOW ? L"shown" : command == SW_HIDE ? L"hidden" : L"?");
        return FALSE;
    });
    const ImportPatch<decltype(SetWindowTextW)> text("SetWindowTextW", [](HWND button, LPCWSTR caption) -> BOOL {
        Call(button, caption);
        return FALSE;
    });
    const ImportPatch<decltype(SetFocus)> focus("SetFocus", [](HWND button) -> HWND {
        Call(button, L"focused");
        return nullptr;
    });
    PendingScreenState = ScreenStateOf(GetParam().status, 0);
    for (const char* time : {"first", "second"}) {
        calls.clear();
        SendMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
        EXPECT_EQ(calls, GetParam().calls) << time;
    }
}

INSTANTIATE_TEST_SUITE_P(, State,
                         testing::Values(StateCase{"Checking", ScreenStatus::Checking, L"", L"", NoButton},
                                         StateCase{"Installing", ScreenStatus::Installing, L"", L"", NoButton},
                                         StateCase{"Failed", ScreenStatus::Failed, L"&Retry >", L"", OneButton},
                                         StateCase{"Completed", ScreenStatus::Completed, L"&Close", L"&Start OneNote",
                                                   TwoButtons}),
                         [](const auto& item) { return item.param.name; });

TEST_F(InstallerWindow, FocusesRetryInFailedAndStartOneNoteInCompleted) {
    Show(ScreenStatus::Failed);
    EXPECT_EQ(GetFocus(), PrimaryButton);
    Show(ScreenStatus::Completed);
    EXPECT_EQ(GetFocus(), SecondaryButton);
}

TEST_F(InstallerWindow, LeavesTheFocusAloneWhenTheButtonOfTheIndexIsDisabled) {
    static int calls;
    calls = 0;
    const ImportPatch<decltype(SetFocus)> focus("SetFocus", [](HWND) -> HWND {
        ++calls;
        return nullptr;
    });
    for (const std::int32_t index : {0, 1, 7})
        ApplyScreenState({.status = ScreenStatus::Installing, .focusIndex = index});
    ApplyScreenState({.status = ScreenStatus::Failed, .primaryEnabled = true, .focusIndex = 1});
    EXPECT_EQ(calls, 0);
}

TEST_F(InstallerWindow, RepaintsAllOfItselfWithoutErasingWhenAStateIsApplied) {
    static int invalidations;
    invalidations = 0;
    const ImportPatch<decltype(InvalidateRect)> invalidate("InvalidateRect",
                                                           [](HWND window, const RECT* area, BOOL erase) -> BOOL {
                                                               ++invalidations;
                                                               EXPECT_EQ(window, MainWindow);
                                                               EXPECT_EQ(area, nullptr);
                                                               EXPECT_FALSE(erase);
                                                               return TRUE;
                                                           });
    ApplyScreenState({});
    EXPECT_EQ(invalidations, 1);
}

TEST_P(EachStatus, IsPaintedOnTheScreen) {
    Show(GetParam());
    UpdateWindow(MainWindow);
    ExpectOnScreen(GetParam());
}

TEST_F(InstallerWindow, IsPaintedWithOneImage) {
    static std::vector<Gdiplus::Rect> areas;
    areas.clear();
    static decltype(&Gdiplus::DllExports::GdipDrawImageRectI) original;
    original = ImportedNow<decltype(Gdiplus::DllExports::GdipDrawImageRectI)>("GdipDrawImageRectI");
    const ImportPatch<decltype(Gdiplus::DllExports::GdipDrawImageRectI)> draw(
        "GdipDrawImageRectI",
        [](Gdiplus::GpGraphics* graphics, Gdiplus::GpImage* image, INT x, INT y, INT width, INT height) {
            areas.emplace_back(x, y, width, height);
            return original(graphics, image, x, y, width, height);
        });
    RedrawWindow(MainWindow, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(areas, std::vector{LayoutHere().client});
}

TEST_F(InstallerWindow, EndsThePaintingThatItBegan) {
    static HDC begun;
    static HDC ended;
    static std::size_t graphicsAtEnd;
    begun = ended = nullptr;
    const LiveGraphics graphics;
    static decltype(&BeginPaint) originalBegin;
    originalBegin = ImportedNow<decltype(BeginPaint)>("BeginPaint");
    const ImportPatch<decltype(BeginPaint)> begin("BeginPaint", [](HWND window, PAINTSTRUCT* paint) {
        EXPECT_EQ(window, MainWindow);
        return begun = originalBegin(window, paint);
    });
    static decltype(&EndPaint) originalEnd;
    originalEnd = ImportedNow<decltype(EndPaint)>("EndPaint");
    const ImportPatch<decltype(EndPaint)> end("EndPaint", [](HWND window, const PAINTSTRUCT* paint) {
        EXPECT_EQ(window, MainWindow);
        ended = paint->hdc;
        graphicsAtEnd = LiveGraphics::Count();
        return originalEnd(window, paint);
    });
    RedrawWindow(MainWindow, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_NE(begun, nullptr);
    EXPECT_EQ(ended, begun);
    EXPECT_GT(LiveGraphics::CountMade(), 0U);
    EXPECT_EQ(graphicsAtEnd, 0U);
}

TEST_F(InstallerWindow, EndsNoPaintingThatCouldNotBegin) {
    static int begins;
    static int ends;
    begins = ends = 0;
    const ImportPatch<decltype(BeginPaint)> begin("BeginPaint", [](HWND, PAINTSTRUCT*) -> HDC {
        ++begins;
        return nullptr;
    });
    const ImportPatch<decltype(EndPaint)> end("EndPaint", [](HWND, const PAINTSTRUCT*) -> BOOL { return ++ends != 0; });
    RedrawWindow(MainWindow, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_EQ(begins, 1);
    EXPECT_EQ(ends, 0);
}

TEST_F(InstallerWindow, IsPaintedWithoutALogo) {
    Show(ScreenStatus::Installing);
    LogoBitmap.reset();
    RedrawWindow(MainWindow, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    ExpectOnScreen(ScreenStatus::Installing);
}

INSTANTIATE_TEST_SUITE_P(, FailedPainting,
                         testing::Values(PaintingCall{"BeginPaint", 0}, PaintingCall{"GetClientRect", FALSE},
                                         PaintingCall{"GdipAlloc", 0}, PaintingCall{"malloc", 0},
                                         PaintingCall{"GdipCreateFromHDC"}, PaintingCall{"GdipCreateBitmapFromScan0"},
                                         PaintingCall{"GdipGetImageGraphicsContext"}, PaintingCall{"GdipGraphicsClear"},
                                         PaintingCall{"GdipSetCompositingQuality"},
                                         PaintingCall{"GdipDrawImageRectRect"}, PaintingCall{"GdipCreateSolidFill"},
                                         PaintingCall{"GdipFillRectangleI"}, PaintingCall{"GdipCreateStringFormat"},
                                         PaintingCall{"GdipSetClipRectI"}, PaintingCall{"GdipDrawString"},
                                         PaintingCall{"GdipDrawImageRectI"}),
                         [](const auto& item) { return item.param.function; });

TEST_P(FailedPainting, IsSkippedAndDoneAnewWithTheNextState) {
    Show(ScreenStatus::Installing);
    UpdateWindow(MainWindow);
    PendingScreenState = ScreenStateOf(ScreenStatus::Completed, 0);
    SendMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
    {
        static ULONG_PTR failure;
        static int calls;
        failure = GetParam().failure;
        calls = 0;
        // Takes the arguments of any function without looking at them.
        const ImportPatch<ULONG_PTR()> call(GetParam().function, [] {
            ++calls;
            return failure;
        });
        UpdateWindow(MainWindow);
        EXPECT_FALSE(GetUpdateRect(MainWindow, nullptr, FALSE)) << "it would be painted for ever";
        EXPECT_EQ(calls != 0, GetParam().function != std::string_view("malloc"))
            << "painting needs no memory of its own";
    }
    EXPECT_EQ(CurrentStatus, ScreenStatus::Completed);
    EXPECT_EQ(CaptionOf(PrimaryButton), L"&Close");
    SendMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
    ExpectOnScreen(ScreenStatus::Completed);
}

// What it does

TEST_F(InstallerWindow, ShowsCheckingAndLetsTheWorkerGoOnWhenTheUserRetries) {
    Show(ScreenStatus::Failed);
    PendingScreenState.focusIndex = 7;
    SendClick(PrimaryButton);
    EXPECT_EQ(CurrentStatus, ScreenStatus::Checking);
    EXPECT_EQ(PendingScreenState.status, ScreenStatus::Checking);
    EXPECT_EQ(PendingScreenState.focusIndex, 7);
    EXPECT_FALSE(IsWindowVisible(PrimaryButton) || IsWindowVisible(SecondaryButton));
    EXPECT_EQ(CaptionOf(PrimaryButton) + CaptionOf(SecondaryButton), L"");
    EXPECT_TRUE(WorkerContinues());
    EXPECT_FALSE(ExitRequested);
    EXPECT_TRUE(IsWindow(MainWindow));
}

TEST_F(InstallerWindow, ShowsCheckingBeforeTheWorkerGoesOn) {
    Show(ScreenStatus::Failed);
    static ScreenStatus statusAtSignal;
    statusAtSignal = ScreenStatus::Failed;
    const ImportPatch<decltype(SetEvent)> signal("SetEvent", [](HANDLE) -> BOOL {
        statusAtSignal = CurrentStatus;
        return TRUE;
    });
    SendClick(PrimaryButton);
    EXPECT_EQ(statusAtSignal, ScreenStatus::Checking);
}

TEST_F(InstallerWindow, IsDestroyedByClose) {
    Show(ScreenStatus::Completed);
    SendClick(PrimaryButton);
    EXPECT_FALSE(IsWindow(MainWindow));
    EXPECT_FALSE(WorkerContinues());
}

TEST_F(InstallerWindow, IsDestroyedAfterOneNoteWasAskedToStart) {
    static bool windowWasThere;
    windowWasThere = false;
    const ImportPatch<decltype(CoCreateInstance)> create(
        "CoCreateInstance", [](REFCLSID type, LPUNKNOWN, DWORD, REFIID, LPVOID*) -> HRESULT {
            if (type == CLSID_OneNoteApplication)
                windowWasThere = IsWindow(MainWindow) != FALSE;
            return REGDB_E_CLASSNOTREG;
        });
    Show(ScreenStatus::Completed);
    const LoggedEntries logged;
    SendClick(SecondaryButton);
    EXPECT_TRUE(windowWasThere);
    EXPECT_FALSE(IsWindow(MainWindow));
    ASSERT_EQ(logged.Get().size(), 2U);
    EXPECT_EQ(logged.Get()[0], L"Starting OneNote");
    EXPECT_TRUE(logged.Get()[1].starts_with(L"ERROR: Failed to start OneNote: "));
}

TEST_P(EachStatus, IgnoresClicksThatItHasNoButtonFor) {
    const ScreenStatus status = GetParam();
    Show(status);
    const LoggedEntries logged;
    if (status != ScreenStatus::Failed && status != ScreenStatus::Completed)
        SendClick(PrimaryButton);
    if (status != ScreenStatus::Completed)
        SendClick(SecondaryButton);
    SendClick(MainWindow);
    SendClick(nullptr);
    EXPECT_TRUE(IsWindow(MainWindow));
    EXPECT_EQ(CurrentStatus, status);
    EXPECT_FALSE(WorkerContinues());
    EXPECT_EQ(logged.Get(), Entries{});
}

TEST_P(EachStatus, IgnoresNotificationsThatAreNoClicks) {
    Show(GetParam());
    for (const WORD notification : {WORD{BN_SETFOCUS}, WORD{BN_KILLFOCUS}, WORD{BN_DOUBLECLICKED}, WORD{1}}) {
        SendClick(PrimaryButton, notification);
        SendClick(SecondaryButton, notification);
    }
    EXPECT_TRUE(IsWindow(MainWindow));
    EXPECT_EQ(CurrentStatus, GetParam());
    EXPECT_FALSE(WorkerContinues());
}

TEST_F(InstallerWindow, KnowsItsButtonsByTheirHandlesWhateverTheId) {
    Show(ScreenStatus::Failed);
    SendClick(PrimaryButton, BN_CLICKED, IDCANCEL);
    EXPECT_TRUE(WorkerContinues());
}

TEST_P(EachStatus, IsDestroyedByTheCloseBox) {
    Show(GetParam());
    SendMessageW(MainWindow, WM_SYSCOMMAND, SC_CLOSE, 0);
    EXPECT_FALSE(IsWindow(MainWindow));
}

INSTANTIATE_TEST_SUITE_P(, EachStatus, testing::ValuesIn(AllStatuses), NameOf);

TEST_F(InstallerWindow, PostsQuitWithZeroWhenItIsDestroyed) {
    DestroyWindow(MainWindow);
    MSG message{};
    ASSERT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    EXPECT_EQ(message.wParam, 0U);
}

TEST_F(InstallerWindow, SavesTheFocusWhenItIsDeactivatedAndRestoresItWithItsOwn) {
    Show(ScreenStatus::Completed);
    SetFocus(PrimaryButton);
    SendMessageW(MainWindow, WM_ACTIVATE, MAKEWPARAM(WA_INACTIVE, 1), 0); // minimized, in the high word
    SetFocus(SecondaryButton);
    SendMessageW(MainWindow, WM_ACTIVATE, WA_ACTIVE, 0); // saves nothing
    SendMessageW(MainWindow, WM_SETFOCUS, 0, 0);
    EXPECT_EQ(GetFocus(), PrimaryButton);
}

TEST_F(InstallerWindow, LeavesTheFocusAloneWhenNoneIsSaved) {
    SetFocus(nullptr);
    SendMessageW(MainWindow, WM_ACTIVATE, WA_INACTIVE, 0);
    static int calls;
    calls = 0;
    const ImportPatch<decltype(SetFocus)> focus("SetFocus", [](HWND) -> HWND {
        ++calls;
        return nullptr;
    });
    SendMessageW(MainWindow, WM_SETFOCUS, 0, 0);
    EXPECT_EQ(calls, 0);
}

TEST_F(InstallerWindow, HandsEveryMessageOnAndReturnsItsResult) {
    static std::vector<UINT> messages;
    messages.clear();
    const ImportPatch<decltype(DefWindowProcW)> handle("DefWindowProcW",
                                                       [](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
                                                           messages.push_back(message);
                                                           return 42;
                                                       });
    const std::vector<UINT> sent{WM_DESTROY, WM_ACTIVATE,   WM_SETFOCUS, WM_PAINT,
                                 WM_COMMAND, WM_APPLYSTATE, WM_CLOSE,    WM_USER};
    for (const UINT message : sent)
        EXPECT_EQ(SendMessageW(MainWindow, message, 1, 0), 42) << message;
    for (const UINT message : sent)
        EXPECT_NE(std::ranges::find(messages, message), messages.end()) << message;
}
