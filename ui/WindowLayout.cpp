#include "ui/WindowLayout.h"

#include "ui/Scaling.h"

namespace {

// In points.
constexpr float ClientWidth = 300;
constexpr float ClientHeight = 150;
constexpr float Margin = 10.5F;
constexpr float LogoSize = 48;
constexpr float TextLeft = 69;
constexpr float TextMarginsAcross = 79.5F;
constexpr float TextMarginsDown = 51;
constexpr float BandHeight = 30;
constexpr float ButtonWidth = 90;
constexpr float ButtonHeight = 19.5F;
constexpr float ButtonFromBottom = 24.75F;
constexpr float PrimaryButtonFromRight = 105;
constexpr float SecondaryButtonFromRight = 198.75F;

Gdiplus::Rect ButtonArea(float fromRight) {
    return {Scale(ClientWidth) - Scale(fromRight), Scale(ClientHeight) - Scale(ButtonFromBottom), Scale(ButtonWidth),
            Scale(ButtonHeight)};
}

} // namespace

Gdiplus::Rect ClientArea() {
    return {0, 0, Scale(ClientWidth), Scale(ClientHeight)};
}

Gdiplus::Rect LogoArea() {
    return {Scale(Margin), Scale(Margin), Scale(LogoSize), Scale(LogoSize)};
}

Gdiplus::Rect ButtonBand() {
    return {0, Scale(ClientHeight) - Scale(BandHeight), Scale(ClientWidth), Scale(BandHeight)};
}

Gdiplus::Rect StatusTextBox() {
    return {Scale(TextLeft), Scale(Margin), Scale(ClientWidth) - Scale(TextMarginsAcross),
            Scale(ClientHeight) - Scale(TextMarginsDown)};
}

Gdiplus::Rect PrimaryButtonArea() {
    return ButtonArea(PrimaryButtonFromRight);
}

Gdiplus::Rect SecondaryButtonArea() {
    return ButtonArea(SecondaryButtonFromRight);
}
