#include "ui/Fonts.h"

#include "ui/Scaling.h"

#include <objbase.h>

#include <memory>

namespace {

constexpr wchar_t Family[] = L"Segoe UI";
constexpr float Points = 9;

std::unique_ptr<Gdiplus::Font> StatusFontObject;
HFONT ControlFontHandle = nullptr; // never deleted: the window has it to its end

std::unique_ptr<Gdiplus::Font> MakeFont(const Gdiplus::FontFamily* family) {
    const auto pixels = static_cast<Gdiplus::REAL>(VerticalScale(Points));
    return std::make_unique<Gdiplus::Font>(family, pixels, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
}

/// Not by the constructor that takes a name: Microsoft's falls back to the generic family, mingw-w64's does not.
std::unique_ptr<Gdiplus::Font> MakeStatusFont() {
    const Gdiplus::FontFamily family(Family);
    auto font = MakeFont(family.GetLastStatus() == Gdiplus::Ok ? &family : Gdiplus::FontFamily::GenericSansSerif());
    if (font->GetLastStatus() != Gdiplus::Ok)
        font = MakeFont(Gdiplus::FontFamily::GenericSansSerif());
    return font;
}

HFONT MakeControlFont() {
    const HDC screen = GetDC(nullptr);
    HFONT font = nullptr;
    {
        const Gdiplus::Graphics graphics(screen);
        LOGFONTW description{}; // stays so for an empty font, and GDI chooses one
        StatusFontObject->GetLogFontW(&graphics, &description);
        font = CreateFontIndirectW(&description);
    }
    ReleaseDC(nullptr, screen);
    return font;
}

} // namespace

void StartGraphics() {
    CoInitialize(nullptr); // once more on this thread, and not balanced by CoUninitialize: the apartment stays
    ULONG_PTR token = 0;   // not kept: GDI+ is never shut down
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
    StatusFontObject = MakeStatusFont();
    ControlFontHandle = MakeControlFont();
}

const Gdiplus::Font& StatusFont() {
    return *StatusFontObject;
}

HFONT ControlFont() {
    return ControlFontHandle;
}
