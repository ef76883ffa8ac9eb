// The installer window in the test's own process: what it is made of, and what it does on each message.

#include "ui/InstallerWindow.h"

#include "app/ProcessState.h"
#include "core/LocalizedStrings.h"
#include "core/Unique.h"
#include "tests/support/ComApartment.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Layouts.h"
#include "tests/support/LogText.h"
#include "tests/support/User.h"
#include "ui/Fonts.h"
#include "ui/Logo.h"
#include "ui/Painting.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>

namespace {

constexpr ScreenStatus AllStatuses[] = {ScreenStatus::Checking, ScreenStatus::Installing, ScreenStatus::Failed,
                                        ScreenStatus::Completed};

std::wstring TextOf(HWND window) {
    std::array<wchar_t, 256> text{};
    GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
    return text.data();
}

void DispatchAll() {
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        if (message.message != WM_QUIT)
            DispatchMessageW(&message);
}

HWND NoWindow(DWORD /*extended*/, LPCWSTR /*type*/, LPCWSTR /*title*/, DWORD /*style*/, int /*x*/, int /*y*/,
              int /*width*/, int /*height*/, HWND /*parent*/, HMENU /*menu*/, HINSTANCE /*module*/, LPVOID /*data*/) {
    return nullptr;
}

int WidthOf(HICON icon) {
    ICONINFO information{};
    EXPECT_TRUE(GetIconInfo(icon, &information));
    BITMAP bitmap{};
    GetObjectW(information.hbmColor, sizeof bitmap, &bitmap);
    DeleteObject(information.hbmColor);
    DeleteObject(information.hbmMask);
    return bitmap.bmWidth;
}

/// What is drawn may reach the screen a little later.
void WaitForTheScreen() {
    GdiFlush();
    Sleep(200);
    DispatchAll();
}

class InstallerWindow : public testing::Test {
protected:
    void SetUp() override {
        InstanceHandle = GetModuleHandleW(nullptr);
        LoadLocalizedStrings(L"en");
        ErrorText = L"Some error";
        continue_.Reset(CreateEventW(nullptr, FALSE, FALSE, nullptr));
        ContinueEvent = continue_.Get();
        LoadLogo();
        CurrentStatus = ScreenStatus::Checking;
        PendingScreenState = {};
        ASSERT_TRUE(CreateInstallerWindow());
        DispatchAll();
    }
    void TearDown() override {
        DestroyWindow(MainWindow);
        DispatchAll();
        MainWindow = PrimaryButton = SecondaryButton = nullptr;
        LogoBitmap.reset();
        ContinueEvent = nullptr;
        PendingScreenState = {};
        CurrentStatus = ScreenStatus::Checking;
        ErrorText.clear();
    }

    static void Show(ScreenStatus status) {
        FillPendingScreenState(status);
        PostMessageW(MainWindow, WM_APPLYSTATE, 0, 0);
        DispatchAll();
        EXPECT_EQ(CurrentStatus, status);
    }

    static void SendClick(HWND button, WORD notification = BN_CLICKED, WORD id = 0) {
        SendMessageW(MainWindow, WM_COMMAND, MAKEWPARAM(id, notification), reinterpret_cast<LPARAM>(button));
    }

    /// Signalled since the last question.
    bool WorkerContinues() const { return WaitForSingleObject(continue_.Get(), 0) == WAIT_OBJECT_0; }

    static Gdiplus::Rect OuterArea() {
        RECT area{};
        GetWindowRect(MainWindow, &area);
        return Area(area);
    }

    static LONG StyleOf(HWND window) {
        return GetWindowLongW(window, GWL_STYLE) & ~static_cast<LONG>(WS_CLIPSIBLINGS); // which Windows adds
    }

private:
    ComApartment apartment_;
    UniqueHandle continue_;
};

struct StateCase {
    const char* name;
    ScreenStatus status;
    const wchar_t* primary;
    const wchar_t* secondary;
};

class State : public InstallerWindow, public testing::WithParamInterface<StateCase> {};

class EachStatus : public InstallerWindow, public testing::WithParamInterface<ScreenStatus> {};

std::string NameOf(const testing::TestParamInfo<ScreenStatus>& item) {
    constexpr std::array<const char*, 4> Names{"Checking", "Installing", "Failed", "Completed"};
    return Names.at(static_cast<std::size_t>(item.param));
}

} // namespace

// What it is made of

TEST_F(InstallerWindow, IsTitledVellumkitAndHasAFixedSize) {
    EXPECT_EQ(TextOf(MainWindow), L"Vellumkit");
    EXPECT_EQ(StyleOf(MainWindow), 0x12CA0000);
    EXPECT_EQ(GetWindowLongW(MainWindow, GWL_EXSTYLE) & ~WS_EX_WINDOWEDGE, 0); // which Windows adds
    EXPECT_EQ(GetMenu(MainWindow), nullptr);
    EXPECT_TRUE(IsWindowVisible(MainWindow));
}

TEST_F(InstallerWindow, HasThisClass) {
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    ASSERT_TRUE(GetClassInfoExW(InstanceHandle, L"WC_VELLUMKIT_INSTALLER", &description));
    EXPECT_EQ(description.style, 0U);
    EXPECT_EQ(description.cbClsExtra, 0);
    EXPECT_EQ(description.cbWndExtra, 0);
    EXPECT_EQ(description.hbrBackground, nullptr);
    EXPECT_EQ(description.lpszMenuName, nullptr);
    EXPECT_EQ(description.hCursor, LoadCursorW(nullptr, IDC_ARROW));
    std::array<wchar_t, 64> name{};
    GetClassNameW(MainWindow, name.data(), static_cast<int>(name.size()));
    EXPECT_STREQ(name.data(), L"WC_VELLUMKIT_INSTALLER");
}

TEST(InstallerWindowClass, HasTheProgramsIconInBothSizes) {
    using Size = std::pair<int, int>;
    static std::vector<Size> sizes;
    sizes.clear();
    static decltype(&LoadImageW) original;
    original = ImportedNow<decltype(LoadImageW)>("LoadImageW");
    const ImportPatch<decltype(LoadImageW)> load(
        "LoadImageW", [](HINSTANCE module, LPCWSTR name, UINT type, int width, int height, UINT flags) -> HANDLE {
            EXPECT_EQ(module, InstanceHandle);
            EXPECT_EQ(reinterpret_cast<ULONG_PTR>(name), 100U);
            EXPECT_EQ(type, static_cast<UINT>(IMAGE_ICON));
            EXPECT_EQ(flags, 0U);
            sizes.emplace_back(width, height);
            return original(module, name, type, width, height, flags);
        });
    static WNDCLASSEXW registered;
    const ImportPatch<decltype(RegisterClassExW)> registration("RegisterClassExW",
                                                               [](const WNDCLASSEXW* description) -> ATOM {
                                                                   registered = *description;
                                                                   return 0;
                                                               });
    const ImportPatch<decltype(CreateWindowExW)> create("CreateWindowExW", NoWindow);
    InstanceHandle = GetModuleHandleW(nullptr);
    CreateInstallerWindow();
    EXPECT_EQ(sizes, (std::vector<Size>{{GetSystemMetrics(SM_CXICON), GetSystemMetrics(SM_CYICON)},
                                        {GetSystemMetrics(SM_CXSMICON), GetSystemMetrics(SM_CYSMICON)}}));
    EXPECT_EQ(WidthOf(registered.hIcon), GetSystemMetrics(SM_CXICON));
    EXPECT_EQ(WidthOf(registered.hIconSm), GetSystemMetrics(SM_CXSMICON));
}

TEST_F(InstallerWindow, HasAClientAreaOfItsLayout) {
    RECT client{};
    GetClientRect(MainWindow, &client);
    EXPECT_EQ(Area(client), LayoutHere().client);
}

TEST_F(InstallerWindow, StandsInTheMiddleOfTheDesktop) {
    RECT desktop{};
    GetWindowRect(GetDesktopWindow(), &desktop);
    const Gdiplus::Rect outer = OuterArea();
    EXPECT_EQ(outer.X, (desktop.right - outer.Width - desktop.left) / 2);
    EXPECT_EQ(outer.Y, (desktop.bottom - outer.Height - desktop.top) / 2);
}

TEST_F(InstallerWindow, HasTwoHiddenPushButtons) {
    EXPECT_EQ(TextOf(PrimaryButton), L"&Retry >");
    EXPECT_EQ(TextOf(SecondaryButton), L"Get &Help");
    for (const HWND button : {PrimaryButton, SecondaryButton}) {
        EXPECT_EQ(StyleOf(button), 0x40010000);
        EXPECT_EQ(GetWindowLongW(button, GWL_EXSTYLE), 0);
        EXPECT_EQ(GetDlgCtrlID(button), 0);
        EXPECT_EQ(GetParent(button), MainWindow);
        std::array<wchar_t, 64> name{};
        GetClassNameW(button, name.data(), static_cast<int>(name.size()));
        EXPECT_STREQ(name.data(), L"Button");
        EXPECT_EQ(SendMessageW(button, WM_GETFONT, 0, 0), reinterpret_cast<LRESULT>(ControlFont()));
    }
    EXPECT_EQ(AreaWithin(MainWindow, PrimaryButton), LayoutHere().primary);
    EXPECT_EQ(AreaWithin(MainWindow, SecondaryButton), LayoutHere().secondary);
}

TEST_F(InstallerWindow, GetsTheControlFontWithItsButtonsWithoutARedraw) {
    static std::vector<HWND> windows;
    windows.clear();
    TearDown();
    {
        static decltype(&SendMessageW) original;
        original = ImportedNow<decltype(SendMessageW)>("SendMessageW");
        const ImportPatch<decltype(SendMessageW)> send(
            "SendMessageW", [](HWND window, UINT message, WPARAM font, LPARAM redraw) -> LRESULT {
                if (message == WM_SETFONT) {
                    windows.push_back(window);
                    EXPECT_EQ(font, reinterpret_cast<WPARAM>(ControlFont()));
                    EXPECT_EQ(redraw, 0);
                }
                return original(window, message, font, redraw);
            });
        ASSERT_TRUE(CreateInstallerWindow());
    }
    EXPECT_EQ(windows, (std::vector<HWND>{MainWindow, PrimaryButton, SecondaryButton}));
}

TEST(InstallerWindowFailure, IsReportedWhenTheWindowCannotBeCreated) {
    const ImportPatch<decltype(CreateWindowExW)> create("CreateWindowExW", NoWindow);
    EXPECT_FALSE(CreateInstallerWindow());
    EXPECT_EQ(MainWindow, nullptr);
}

TEST_F(InstallerWindow, ComesWithoutButtonsThatCannotBeCreated) {
    TearDown();
    static decltype(&CreateWindowExW) original;
    original = ImportedNow<decltype(CreateWindowExW)>("CreateWindowExW");
    const ImportPatch<decltype(CreateWindowExW)> create(
        "CreateWindowExW",
        [](DWORD extended, LPCWSTR type, LPCWSTR title, DWORD style, int x, int y, int width, int height, HWND parent,
           HMENU menu, HINSTANCE instance, LPVOID data) -> HWND {
            if (parent != nullptr)
                return nullptr;
            return original(extended, type, title, style, x, y, width, height, parent, menu, instance, data);
        });
    ASSERT_TRUE(CreateInstallerWindow());
    EXPECT_EQ(PrimaryButton, nullptr);
    EXPECT_EQ(SecondaryButton, nullptr);
    Show(ScreenStatus::Completed);
    EXPECT_TRUE(IsWindow(MainWindow));
}

// The states

TEST_P(State, HasItsButtonsWhenItIsPosted) {
    const StateCase& item = GetParam();
    Show(ScreenStatus::Completed); // so that hiding shows
    Show(item.status);
    EXPECT_EQ(TextOf(PrimaryButton), item.primary);
    EXPECT_EQ(TextOf(SecondaryButton), item.secondary);
    EXPECT_EQ(IsWindowVisible(PrimaryButton) != FALSE, *item.primary != L'\0');
    EXPECT_EQ(IsWindowVisible(SecondaryButton) != FALSE, *item.secondary != L'\0');
    EXPECT_EQ(IsWindowEnabled(PrimaryButton) != FALSE, *item.primary != L'\0');
    EXPECT_EQ(IsWindowEnabled(SecondaryButton) != FALSE, *item.secondary != L'\0');
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
    EXPECT_EQ(TextOf(PrimaryButton), item.primary);
    EXPECT_EQ(TextOf(SecondaryButton), item.secondary);
    EXPECT_FALSE(WorkerContinues());
}

INSTANTIATE_TEST_SUITE_P(, State,
                         testing::Values(StateCase{"Checking", ScreenStatus::Checking, L"", L""},
                                         StateCase{"Installing", ScreenStatus::Installing, L"", L""},
                                         StateCase{"Failed", ScreenStatus::Failed, L"&Retry >", L""},
                                         StateCase{"Completed", ScreenStatus::Completed, L"&Close", L"&Start OneNote"}),
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
    WaitForTheScreen();
    const Picture seen = User::LookAt(MainWindow);
    const Picture painted = PictureOf(*RenderScreen(GetParam()));
    const Gdiplus::Rect aboveTheButtons(0, 0, painted.width, LayoutHere().primary.Y);
    EXPECT_TRUE(SamePixels(Cut(seen, aboveTheButtons), Cut(painted, aboveTheButtons)));
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
    begun = ended = nullptr;
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
        return originalEnd(window, paint);
    });
    RedrawWindow(MainWindow, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    EXPECT_NE(begun, nullptr);
    EXPECT_EQ(ended, begun);
}

TEST_F(InstallerWindow, IsPaintedWithoutALogo) {
    Show(ScreenStatus::Installing);
    LogoBitmap.reset();
    RedrawWindow(MainWindow, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    WaitForTheScreen();
    const Picture seen = User::LookAt(MainWindow);
    EXPECT_TRUE(IsFilled(seen, LayoutHere().logo, White));
    EXPECT_FALSE(Drawn(seen, LayoutHere().text).IsEmptyArea());
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
    EXPECT_EQ(TextOf(PrimaryButton) + TextOf(SecondaryButton), L"");
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
    const ImportPatch<decltype(CoCreateInstance)> create("CoCreateInstance",
                                                         [](REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*) -> HRESULT {
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

// The message loop

TEST_F(InstallerWindow, LetsTheLoopEndWithTheExitCodeOfQuit) {
    PostQuitMessage(23);
    EXPECT_EQ(RunMessageLoop(), 23);
}

TEST_F(InstallerWindow, LetsTheLoopEndWithZeroWhenItIsClosed) {
    PostMessageW(MainWindow, WM_CLOSE, 0, 0);
    EXPECT_EQ(RunMessageLoop(), 0);
    EXPECT_FALSE(IsWindow(MainWindow));
}

TEST_F(InstallerWindow, LetsTheLoopGoOnAfterAFailure) {
    static int calls;
    calls = 0;
    const ImportPatch<decltype(GetMessageW)> get("GetMessageW", [](MSG* message, HWND window, UINT, UINT) -> BOOL {
        EXPECT_EQ(window, nullptr);
        *message = {};
        message->wParam = 5;
        return ++calls == 1 ? -1 : 0;
    });
    EXPECT_EQ(RunMessageLoop(), 5);
    EXPECT_EQ(calls, 2);
}

TEST_F(InstallerWindow, LetsTheLoopTranslateAndDispatchOnlyWhatIsNoDialogKey) {
    using Calls = std::vector<std::string>;
    static Calls calls;
    static bool isDialogKey;
    const ImportPatch<decltype(IsDialogMessageW)> test("IsDialogMessageW", [](HWND window, MSG*) -> BOOL {
        EXPECT_EQ(window, MainWindow);
        return isDialogKey;
    });
    const ImportPatch<decltype(TranslateMessage)> translate("TranslateMessage", [](const MSG* message) -> BOOL {
        if (message->message == WM_APP)
            calls.emplace_back("translate");
        return FALSE;
    });
    const ImportPatch<decltype(DispatchMessageW)> dispatch("DispatchMessageW", [](const MSG* message) -> LRESULT {
        if (message->message == WM_APP)
            calls.emplace_back("dispatch");
        return 0;
    });
    for (const bool key : {true, false}) {
        isDialogKey = key;
        calls.clear();
        PostMessageW(MainWindow, WM_APP, 0, 0);
        PostQuitMessage(0);
        RunMessageLoop();
        EXPECT_EQ(calls, key ? Calls{} : (Calls{"translate", "dispatch"}));
    }
}
