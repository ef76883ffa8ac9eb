#include "tests/support/Layouts.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <iostream>

namespace {

const Layout Layouts[] = {
    {.pixelsPerInch = 96,
     .client = {0, 0, 400, 200},
     .logo = {14, 14, 64, 64},
     .band = {0, 160, 400, 40},
     .text = {92, 14, 294, 132},
     .primary = {260, 167, 120, 26},
     .secondary = {135, 167, 120, 26},
     .font = 12},
    {.pixelsPerInch = 120,
     .client = {0, 0, 500, 250},
     .logo = {18, 18, 80, 80},
     .band = {0, 200, 500, 50},
     .text = {115, 18, 367, 165},
     .primary = {325, 209, 150, 33},
     .secondary = {169, 209, 150, 33},
     .font = 15},
    {.pixelsPerInch = 144,
     .client = {0, 0, 600, 300},
     .logo = {21, 21, 96, 96},
     .band = {0, 240, 600, 60},
     .text = {138, 21, 441, 198},
     .primary = {390, 250, 180, 39},
     .secondary = {202, 250, 180, 39},
     .font = 18},
    {.pixelsPerInch = 192,
     .client = {0, 0, 800, 400},
     .logo = {28, 28, 128, 128},
     .band = {0, 320, 800, 80},
     .text = {184, 28, 588, 264},
     .primary = {520, 334, 240, 52},
     .secondary = {270, 334, 240, 52},
     .font = 24},
};

int ScreenPixelsPerInch() {
    const HDC screen = GetDC(nullptr);
    const int pixels = GetDeviceCaps(screen, LOGPIXELSX);
    ReleaseDC(nullptr, screen);
    return pixels;
}

int WantedPixelsPerInch() {
    std::array<wchar_t, 16> setting{};
    if (GetEnvironmentVariableW(L"VELLUMKIT_DPI", setting.data(), static_cast<DWORD>(setting.size())) == 0)
        return 96;
    return static_cast<int>(std::wcstol(setting.data(), nullptr, 10));
}

const Layout& FindLayout() {
    const int wanted = WantedPixelsPerInch();
    const auto* const layout = std::ranges::find(Layouts, wanted, &Layout::pixelsPerInch);
    if (layout == std::end(Layouts) || ScreenPixelsPerInch() != wanted) {
        std::cout << "the screen has " << ScreenPixelsPerInch() << " DPI, and the tests want " << wanted << std::endl;
        ExitProcess(1);
    }
    return *layout;
}

} // namespace

const Layout& LayoutHere() {
    static const Layout& layout = FindLayout();
    return layout;
}

bool Gdiplus::operator==(const Rect& left, const Rect& right) {
    return left.Equals(right) != FALSE;
}

std::ostream& Gdiplus::operator<<(std::ostream& stream, const Rect& rectangle) {
    return stream << rectangle.Width << " x " << rectangle.Height << " at " << rectangle.X << ", " << rectangle.Y;
}

Gdiplus::Rect Area(const RECT& rectangle) {
    return {rectangle.left, rectangle.top, rectangle.right - rectangle.left, rectangle.bottom - rectangle.top};
}

Gdiplus::Rect AreaWithin(HWND window, HWND child) {
    RECT area{};
    GetWindowRect(child, &area);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&area), 2);
    return Area(area);
}
