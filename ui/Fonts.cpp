#include "ui/Fonts.h"

#include "ui/Scaling.h"

#include <objbase.h>

#include <optional>

namespace {

constexpr wchar_t Family[] = L"Segoe UI";
constexpr float Points = 9;

std::optional<Gdiplus::Font> StatusFontObject;
HFONT ControlFontHandle = nullptr; // never deleted: the window has it to its end

bool TryFamily(const Gdiplus::FontFamily* family) {
    const auto pixels = static_cast<Gdiplus::REAL>(VerticalScale(Points));
    StatusFontObject.emplace(family, pixels, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
    return StatusFontObject->GetLastStatus() == Gdiplus::Ok;
}

/// Not by the constructor that takes a name: Microsoft's falls back to the generic family, mingw-w64's does not.
void MakeStatusFont() {
    const Gdiplus::FontFamily family(Family);
    if (!TryFamily(family.GetLastStatus() == Gdiplus::Ok ? &family : Gdiplus::FontFamily::GenericSansSerif()))
        TryFamily(Gdiplus::FontFamily::GenericSansSerif());
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
}

void MakeFonts() {
    MakeStatusFont();
    ControlFontHandle = MakeControlFont();
}

const Gdiplus::Font& StatusFont() {
    return *StatusFontObject;
}

HFONT ControlFont() {
    return ControlFontHandle;
}
