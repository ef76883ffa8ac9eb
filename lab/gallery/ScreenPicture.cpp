#include "lab/gallery/ScreenPicture.h"

#include <gdiplus.h>

bool SaveScreen(const RECT& area, const std::wstring& file) {
    const int width = area.right - area.left;
    const int height = area.bottom - area.top;
    Gdiplus::Bitmap picture(width, height, PixelFormat24bppRGB);
    {
        Gdiplus::Graphics graphics(&picture);
        const HDC target = graphics.GetHDC();
        const HDC screen = GetDC(nullptr);
        BitBlt(target, 0, 0, width, height, screen, area.left, area.top, SRCCOPY);
        ReleaseDC(nullptr, screen);
        graphics.ReleaseHDC(target);
    }
    constexpr CLSID PngEncoder{0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
    return picture.Save(file.c_str(), &PngEncoder, nullptr) == Gdiplus::Ok;
}
