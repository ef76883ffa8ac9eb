#include "ui/Fonts.h"

#include "ui/Scaling.h"

#include <objbase.h>

#include <algorithm>
#include <array>
#include <memory>

namespace {

struct FontDescription {
    const wchar_t* family;
    float points;
    INT style;
};

// The window uses the first one only.
constexpr std::array<FontDescription, FontCount> Descriptions{{
    {L"Segoe UI", 9, Gdiplus::FontStyleRegular},
    {L"Segoe UI", 9, Gdiplus::FontStyleBold},
    {L"Segoe UI", 9, Gdiplus::FontStyleUnderline},
    {L"Segoe UI", 15, Gdiplus::FontStyleRegular},
    {L"Marlett", 9, Gdiplus::FontStyleRegular},
    {L"Consolas", 10, Gdiplus::FontStyleRegular},
}};

using FontPointer = std::unique_ptr<Gdiplus::Font>;

std::array<FontPointer, FontCount> Fonts;
std::array<HFONT, FontCount> FontHandles; // never deleted: the window has them to its end

FontPointer MakeFont(const FontDescription& description) {
    const auto make = [&description](const Gdiplus::FontFamily* family) {
        const auto pixels = static_cast<Gdiplus::REAL>(VerticalScale(description.points));
        return std::make_unique<Gdiplus::Font>(family, pixels, description.style, Gdiplus::UnitPixel);
    };
    // The constructor that takes a name falls back to the generic family in one compiler's header, and not in
    // another's.
    const Gdiplus::FontFamily family(description.family);
    auto font = make(family.GetLastStatus() == Gdiplus::Ok ? &family : Gdiplus::FontFamily::GenericSansSerif());
    if (font->GetLastStatus() != Gdiplus::Ok)
        font = make(Gdiplus::FontFamily::GenericSansSerif());
    return font;
}

HFONT MakeHandle(const FontPointer& font, const Gdiplus::Graphics& screen) {
    LOGFONTW description{}; // stays so for an empty font, and GDI chooses one
    font->GetLogFontW(&screen, &description);
    return CreateFontIndirectW(&description);
}

void MakeHandles() {
    const HDC screen = GetDC(nullptr);
    {
        const Gdiplus::Graphics graphics(screen);
        std::ranges::transform(Fonts, FontHandles.begin(),
                               [&graphics](const FontPointer& font) { return MakeHandle(font, graphics); });
    }
    ReleaseDC(nullptr, screen);
}

} // namespace

void StartGraphics() {
    CoInitialize(nullptr); // once more on this thread, without harm, and never taken back
    ULONG_PTR token = 0;   // not kept: GDI+ is never shut down
    const Gdiplus::GdiplusStartupInput input;
    Gdiplus::GdiplusStartup(&token, &input, nullptr);
    std::ranges::transform(Descriptions, Fonts.begin(), MakeFont);
    MakeHandles();
}

const Gdiplus::Font& FontAt(std::size_t index) {
    return *Fonts[index];
}

HFONT FontHandleAt(std::size_t index) {
    return FontHandles[index];
}

HFONT ControlFont() {
    return FontHandleAt(0);
}
