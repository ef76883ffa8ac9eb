#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <gtest/gtest.h>
#include <vector>

/// Pixels that a test looks at, row by row from the top, without transparency: 0xFFrrggbb.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Gdiplus::ARGB> pixels;

    Gdiplus::ARGB At(int x, int y) const;
    bool operator==(const Picture&) const = default;
};

inline constexpr Gdiplus::ARGB White = 0xFFFFFFFF;
inline constexpr Gdiplus::ARGB LightGrey = 0xFFF0F0F0;

Picture PictureOf(Gdiplus::Bitmap& bitmap);

/// The part of a picture.
Picture Cut(const Picture& picture, const Gdiplus::Rect& area);

/// The smallest rectangle that has all pixels of `area` that are not of the background's colour; empty without any.
Gdiplus::Rect Drawn(const Picture& picture, const Gdiplus::Rect& area, Gdiplus::ARGB background = White);

/// A failure names the first pixel that differs.
testing::AssertionResult SamePixels(const Picture& left, const Picture& right);

/// Every pixel of the area has this colour.
bool IsFilled(const Picture& picture, const Gdiplus::Rect& area, Gdiplus::ARGB colour);
