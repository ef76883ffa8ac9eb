#include "ui/Scaling.h"

#include <windows.h>

#include <cmath>

namespace {

float PixelsPerPoint(int capability) {
    const HDC screen = GetDC(nullptr);
    const int pixelsPerInch = GetDeviceCaps(screen, capability);
    ReleaseDC(nullptr, screen);
    // A screen that tells no resolution: a window without a size could not even be closed.
    return static_cast<float>(pixelsPerInch > 0 ? pixelsPerInch : USER_DEFAULT_SCREEN_DPI) / 72.0F;
}

int Rounded(float pixels) {
    return static_cast<int>(std::trunc(pixels + 0.5F));
}

} // namespace

float ScaleFactor() {
    static const float factor = PixelsPerPoint(LOGPIXELSX);
    return factor;
}

float VerticalScaleFactor() {
    static const float factor = PixelsPerPoint(LOGPIXELSY);
    return factor;
}

int Scale(float points) {
    return Rounded(points * ScaleFactor());
}

int VerticalScale(float points) {
    return Rounded(points * VerticalScaleFactor());
}
