#include "tests/support/Picture.h"

#include <algorithm>

Gdiplus::ARGB Picture::At(int x, int y) const {
    return pixels.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
}

Picture PictureOf(Gdiplus::Bitmap& bitmap) {
    Picture picture{static_cast<int>(bitmap.GetWidth()), static_cast<int>(bitmap.GetHeight()), {}};
    const Gdiplus::Rect whole(0, 0, picture.width, picture.height);
    Gdiplus::BitmapData data{};
    bitmap.LockBits(&whole, Gdiplus::ImageLockModeRead, PixelFormat32bppRGB, &data);
    for (int y = 0; y < picture.height; ++y) {
        const auto* const row = reinterpret_cast<const Gdiplus::ARGB*>(static_cast<const std::byte*>(data.Scan0) +
                                                                       static_cast<std::ptrdiff_t>(y) * data.Stride);
        std::transform(row, row + picture.width, std::back_inserter(picture.pixels),
                       [](Gdiplus::ARGB pixel) { return pixel | 0xFF000000; });
    }
    bitmap.UnlockBits(&data);
    return picture;
}

Picture Cut(const Picture& picture, const Gdiplus::Rect& area) {
    Picture part{area.Width, area.Height, {}};
    for (int y = area.Y; y < area.GetBottom(); ++y)
        for (int x = area.X; x < area.GetRight(); ++x)
            part.pixels.push_back(picture.At(x, y));
    return part;
}

Gdiplus::Rect Drawn(const Picture& picture, const Gdiplus::Rect& area, Gdiplus::ARGB background) {
    Gdiplus::Rect drawn;
    for (int y = area.Y; y < area.GetBottom(); ++y)
        for (int x = area.X; x < area.GetRight(); ++x)
            if (picture.At(x, y) != background) {
                const Gdiplus::Rect pixel(x, y, 1, 1);
                if (drawn.IsEmptyArea())
                    drawn = pixel;
                else
                    Gdiplus::Rect::Union(drawn, drawn, pixel);
            }
    return drawn;
}

testing::AssertionResult SamePixels(const Picture& left, const Picture& right) {
    if (left.width != right.width || left.height != right.height)
        return testing::AssertionFailure()
               << left.width << " x " << left.height << " and " << right.width << " x " << right.height << " pixels";
    const auto [in, other] = std::ranges::mismatch(left.pixels, right.pixels);
    if (in == left.pixels.end())
        return testing::AssertionSuccess() << "all pixels are the same";
    const auto index = static_cast<int>(in - left.pixels.begin());
    return testing::AssertionFailure() << "at " << index % left.width << ", " << index / left.width << " are "
                                       << std::hex << *in << " and " << *other;
}

bool IsFilled(const Picture& picture, const Gdiplus::Rect& area, Gdiplus::ARGB colour) {
    const Picture part = Cut(picture, area);
    return std::ranges::all_of(part.pixels, [colour](Gdiplus::ARGB pixel) { return pixel == colour; });
}
