#include "ui/Painting.h"

#include "ui/Fonts.h"
#include "ui/Logo.h"
#include "ui/StatusText.h"
#include "ui/WindowLayout.h"

#include <string_view>

namespace {

constexpr Gdiplus::ARGB White = 0xFFFFFFFF;
constexpr Gdiplus::ARGB LightGrey = 0xFFF0F0F0;
constexpr Gdiplus::ARGB Black = 0xFF000000;

constexpr Gdiplus::REAL LogoPixels = 64; // of the image, across and down

Gdiplus::RectF AsRectF(const Gdiplus::Rect& area) {
    return {static_cast<Gdiplus::REAL>(area.X), static_cast<Gdiplus::REAL>(area.Y),
            static_cast<Gdiplus::REAL>(area.Width), static_cast<Gdiplus::REAL>(area.Height)};
}

void PaintScreen(Gdiplus::Graphics& surface, std::wstring_view text) {
    surface.Clear(Gdiplus::Color(White));
    surface.SetCompositingQuality(Gdiplus::CompositingQualityHighQuality);
    surface.DrawImage(LogoBitmap.get(), AsRectF(LogoArea()), 0, 0, LogoPixels, LogoPixels, Gdiplus::UnitPixel);

    const Gdiplus::SolidBrush bandBrush{Gdiplus::Color(LightGrey)};
    surface.FillRectangle(&bandBrush, ButtonBand());

    const Gdiplus::SolidBrush textBrush{Gdiplus::Color(Black)};
    const Gdiplus::StringFormat wrapped; // at word boundaries, from the left top, cut at the box
    surface.SetClip(StatusTextBox());    // the format asks for it too, but Wine's GDI+ does not clip text in a bitmap
    surface.DrawString(text.data(), static_cast<INT>(text.size()), &StatusFont(), AsRectF(StatusTextBox()), &wrapped,
                       &textBrush);
}

} // namespace

std::unique_ptr<Gdiplus::Bitmap> RenderScreen(ScreenStatus status) {
    const Gdiplus::Rect area = ClientArea();
    auto image = std::make_unique<Gdiplus::Bitmap>(area.Width, area.Height, PixelFormat32bppARGB);
    Gdiplus::Graphics surface(image.get());
    PaintScreen(surface, StatusText(status));
    return image;
}
