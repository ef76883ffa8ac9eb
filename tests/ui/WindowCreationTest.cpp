// What the installer window is made of.

#include "core/Launch.h"
#include "install/ScreenState.h"
#include "install/WorkerSignals.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/InstallerScreen.h"
#include "tests/support/Layouts.h"
#include "tests/support/Picture.h"
#include "tests/support/WindowFixture.h"
#include "ui/Fonts.h"
#include "ui/InstallerWindow.h"

#include <array>
#include <vector>

namespace {

HWND NoWindow(DWORD /*extended*/, LPCWSTR /*type*/, LPCWSTR /*title*/, DWORD /*style*/, int /*x*/, int /*y*/,
              int /*width*/, int /*height*/, HWND /*parent*/, HMENU /*menu*/, HINSTANCE /*module*/, LPVOID /*data*/) {
    return nullptr;
}

/// What an icon looks like on white, as large as it is.
Picture PictureOfIcon(HICON icon, int size) {
    Gdiplus::Bitmap canvas(size, size, PixelFormat32bppRGB);
    {
        Gdiplus::Graphics graphics(&canvas);
        graphics.Clear(Gdiplus::Color(White));
        const HDC context = graphics.GetHDC();
        EXPECT_TRUE(DrawIconEx(context, 0, 0, icon, size, size, 0, nullptr, DI_NORMAL));
        graphics.ReleaseHDC(context);
    }
    return PictureOf(canvas);
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

class WindowCreation : public WindowFixture {
protected:
    static Gdiplus::Rect OuterArea() {
        RECT area{};
        GetWindowRect(MainWindow, &area);
        return Area(area);
    }

    static HINSTANCE ModuleOf(HWND window) {
        return reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(window, GWLP_HINSTANCE));
    }

    static LONG StyleOf(HWND window) {
        return GetWindowLongW(window, GWL_STYLE) & ~static_cast<LONG>(WS_CLIPSIBLINGS); // which Windows adds
    }
};

} // namespace

TEST_F(WindowCreation, IsTitledVellumkitAndHasAFixedSize) {
    EXPECT_EQ(CaptionOf(MainWindow), L"Vellumkit");
    EXPECT_EQ(StyleOf(MainWindow), 0x12CA0000);
    EXPECT_EQ(GetWindowLongW(MainWindow, GWL_EXSTYLE) & ~WS_EX_WINDOWEDGE, 0); // which Windows adds
    EXPECT_EQ(GetMenu(MainWindow), nullptr);
    EXPECT_EQ(ModuleOf(MainWindow), InstanceHandle);
    EXPECT_TRUE(IsWindowVisible(MainWindow));
}

TEST_F(WindowCreation, HasThisClass) {
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

TEST(WindowClass, HasTheProgramsIconInBothSizes) {
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

TEST_F(WindowCreation, ShowsTheProductsIcon) {
    const std::pair<int, int> icons[] = {{GCLP_HICON, SM_CXICON}, {GCLP_HICONSM, SM_CXSMICON}};
    for (const auto& [index, metric] : icons) {
        SCOPED_TRACE(index);
        const int size = GetSystemMetrics(metric);
        const Picture picture = PictureOfIcon(reinterpret_cast<HICON>(GetClassLongPtrW(MainWindow, index)), size);
        const auto colourAt = [&](int x, int y) { return picture.At(x * size / 64, y * size / 64); };
        EXPECT_EQ(colourAt(0, 0), White);
        EXPECT_EQ(colourAt(32, 10), 0xFFFBEED0) << "the sheet";
        EXPECT_EQ(colourAt(20, 20), 0xFF6B1F3A) << "the initial";
    }
}

TEST_F(WindowCreation, HasAClientAreaOfItsLayout) {
    RECT client{};
    GetClientRect(MainWindow, &client);
    EXPECT_EQ(Area(client), LayoutHere().client);
}

TEST_F(WindowCreation, StandsInTheMiddleOfTheDesktop) {
    RECT desktop{};
    GetWindowRect(GetDesktopWindow(), &desktop);
    const Gdiplus::Rect outer = OuterArea();
    EXPECT_EQ(outer.X, (desktop.right - outer.Width - desktop.left) / 2);
    EXPECT_EQ(outer.Y, (desktop.bottom - outer.Height - desktop.top) / 2);
}

TEST_F(WindowCreation, HasTwoHiddenPushButtons) {
    EXPECT_EQ(CaptionOf(PrimaryButton), L"&Retry >");
    EXPECT_EQ(CaptionOf(SecondaryButton), L"Get &Help");
    for (const HWND button : {PrimaryButton, SecondaryButton}) {
        EXPECT_EQ(StyleOf(button), 0x40010000);
        EXPECT_EQ(GetWindowLongW(button, GWL_EXSTYLE), 0);
        EXPECT_EQ(GetDlgCtrlID(button), 0);
        EXPECT_EQ(GetParent(button), MainWindow);
        EXPECT_EQ(ModuleOf(button), InstanceHandle);
        std::array<wchar_t, 64> name{};
        GetClassNameW(button, name.data(), static_cast<int>(name.size()));
        EXPECT_STREQ(name.data(), L"Button");
        EXPECT_EQ(SendMessageW(button, WM_GETFONT, 0, 0), reinterpret_cast<LRESULT>(ControlFont()));
    }
    EXPECT_EQ(AreaWithin(MainWindow, PrimaryButton), LayoutHere().primary);
    EXPECT_EQ(AreaWithin(MainWindow, SecondaryButton), LayoutHere().secondary);
}

TEST_F(WindowCreation, GetsTheControlFontWithItsButtonsWithoutARedraw) {
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

TEST_F(WindowCreation, IsShownWithItsButtonsInIt) {
    using Calls = std::vector<std::pair<HWND, int>>;
    static Calls calls;
    calls.clear();
    TearDown();
    {
        const ImportPatch<decltype(ShowWindow)> show("ShowWindow", [](HWND window, int command) -> BOOL {
            EXPECT_NE(SecondaryButton, nullptr);
            calls.emplace_back(window, command);
            return FALSE;
        });
        ASSERT_TRUE(CreateInstallerWindow());
    }
    EXPECT_EQ(calls, (Calls{{MainWindow, SW_SHOW}}));
}

TEST(WindowCreationFailure, IsReportedWhenTheWindowCannotBeCreated) {
    const ImportPatch<decltype(CreateWindowExW)> create("CreateWindowExW", NoWindow);
    EXPECT_FALSE(CreateInstallerWindow());
    EXPECT_EQ(MainWindow, nullptr);
}

TEST_F(WindowCreation, ComesWithoutButtonsThatCannotBeCreated) {
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
