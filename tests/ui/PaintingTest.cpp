// What the painted screen looks like, read from its pixels.

#include "ui/Painting.h"

#include "core/LocalizedStrings.h"
#include "install/ScreenState.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Layouts.h"
#include "tests/support/LiveObjects.h"
#include "tests/support/Picture.h"
#include "ui/Fonts.h"
#include "ui/Logo.h"

#include <gtest/gtest.h>

namespace {

namespace flat = Gdiplus::DllExports;

class Painting : public testing::Test {
protected:
    void SetUp() override {
        LoadLocalizedStrings(L"en");
        SetErrorText(L"Some error");
        LoadLogo();
    }
    void TearDown() override {
        LogoBitmap.reset();
        ErrorText = nullptr;
    }

    static Picture Paint(ScreenStatus status) { return PictureOf(*RenderScreen(status)); }

    /// The painted text of a failure.
    static Picture PaintText(const std::wstring& text) {
        SetErrorText(text);
        return Paint(ScreenStatus::Failed);
    }

    /// What is drawn above the band and right of the logo.
    static Gdiplus::Rect DrawnText(const Picture& picture) {
        const Layout& layout = LayoutHere();
        const int left = layout.logo.GetRight() + 1; // a scaled logo may reach into the next pixel
        return Drawn(picture, {left, 0, layout.client.Width - left, layout.band.Y});
    }

    const Layout& layout_ = LayoutHere();
};

struct StatusCase {
    const char* name;
    ScreenStatus status;
    StringId text;
};

class StatusText : public Painting, public testing::WithParamInterface<StatusCase> {};

} // namespace

TEST_F(Painting, IsAsLargeAsTheClientArea) {
    const auto image = RenderScreen(ScreenStatus::Checking);
    EXPECT_EQ(Gdiplus::Rect(0, 0, static_cast<INT>(image->GetWidth()), static_cast<INT>(image->GetHeight())),
              layout_.client);
    EXPECT_EQ(image->GetPixelFormat(), PixelFormat32bppARGB);
}

TEST_F(Painting, IsOpaqueWhiteWithALightGreyBand) {
    const auto image = RenderScreen(static_cast<ScreenStatus>(99));
    Gdiplus::Color corner;
    image->GetPixel(0, 0, &corner);
    EXPECT_EQ(corner.GetValue(), White);
    image->GetPixel(layout_.client.Width - 1, layout_.client.Height - 1, &corner);
    EXPECT_EQ(corner.GetValue(), LightGrey);

    const Picture picture = PictureOf(*image);
    EXPECT_TRUE(IsFilled(picture, layout_.band, LightGrey));
    const int right = layout_.logo.GetRight() + 1;
    EXPECT_TRUE(IsFilled(picture, {right, 0, layout_.client.Width - right, layout_.band.Y}, White));
}

TEST_F(Painting, HasTheLogoInItsPlace) {
    const Picture picture = Paint(static_cast<ScreenStatus>(99));
    const Gdiplus::Rect above(0, 0, layout_.client.Width, layout_.band.Y);
    const Gdiplus::Rect drawn = Drawn(picture, above);
    // The image has a margin of a few of its 64 pixels.
    const int margin = layout_.logo.Width / 8;
    EXPECT_NEAR(drawn.X, layout_.logo.X, margin);
    EXPECT_NEAR(drawn.Y, layout_.logo.Y, margin);
    EXPECT_NEAR(drawn.GetRight(), layout_.logo.GetRight(), margin);
    EXPECT_NEAR(drawn.GetBottom(), layout_.logo.GetBottom(), margin);
}

TEST_F(Painting, DrawsTheWholeLogoIntoItsPlace) {
    static Gdiplus::RectF destination;
    static Gdiplus::RectF source;
    static bool plain;
    const ImportPatch<decltype(flat::GdipDrawImageRectRect)> draw(
        "GdipDrawImageRectRect",
        [](Gdiplus::GpGraphics*, Gdiplus::GpImage*, Gdiplus::REAL x, Gdiplus::REAL y, Gdiplus::REAL width,
           Gdiplus::REAL height, Gdiplus::REAL sourceX, Gdiplus::REAL sourceY, Gdiplus::REAL sourceWidth,
           Gdiplus::REAL sourceHeight, Gdiplus::Unit unit, const Gdiplus::GpImageAttributes* attributes,
           Gdiplus::DrawImageAbort abort, VOID*) {
            destination = {x, y, width, height};
            source = {sourceX, sourceY, sourceWidth, sourceHeight};
            plain = unit == Gdiplus::UnitPixel && attributes == nullptr && abort == nullptr;
            return Gdiplus::GenericError; // which nobody checks
        });
    Paint(ScreenStatus::Checking);
    EXPECT_TRUE(destination.Equals(
        {static_cast<Gdiplus::REAL>(layout_.logo.X), static_cast<Gdiplus::REAL>(layout_.logo.Y),
         static_cast<Gdiplus::REAL>(layout_.logo.Width), static_cast<Gdiplus::REAL>(layout_.logo.Height)}));
    EXPECT_TRUE(source.Equals({0, 0, 64, 64}));
    EXPECT_TRUE(plain);
}

TEST_F(Painting, FillsTheBandWithLightGreyAndWritesInBlack) {
    static std::vector<Gdiplus::ARGB> colours;
    colours.clear();
    static decltype(&flat::GdipCreateSolidFill) original;
    original = ImportedNow<decltype(flat::GdipCreateSolidFill)>("GdipCreateSolidFill");
    const ImportPatch<decltype(flat::GdipCreateSolidFill)> create(
        "GdipCreateSolidFill", [](Gdiplus::ARGB colour, Gdiplus::GpSolidFill** brush) {
            colours.push_back(colour);
            return original(colour, brush);
        });
    Paint(ScreenStatus::Checking);
    EXPECT_EQ(colours, (std::vector<Gdiplus::ARGB>{0xFFF0F0F0, 0xFF000000}));
}

TEST_F(Painting, ReleasesWhatItPaintsWith) {
    const LiveGraphics graphics;
    auto image = RenderScreen(ScreenStatus::Checking);
    EXPECT_GT(LiveGraphics::CountMade(), 1U);
    EXPECT_EQ(LiveGraphics::Count(), 1U) << "the image itself";
    image.reset();
    EXPECT_EQ(LiveGraphics::Count(), 0U);
}

TEST_F(Painting, CompositesInHighQuality) {
    static Gdiplus::CompositingQuality quality;
    const ImportPatch<decltype(flat::GdipSetCompositingQuality)> set(
        "GdipSetCompositingQuality", [](Gdiplus::GpGraphics*, Gdiplus::CompositingQuality wanted) {
            quality = wanted;
            return Gdiplus::Ok;
        });
    Paint(ScreenStatus::Checking);
    EXPECT_EQ(quality, Gdiplus::CompositingQualityHighQuality);
}

TEST_F(Painting, IsNoneWithoutMemory) {
    const ImportPatch<decltype(flat::GdipAlloc)> alloc("GdipAlloc", [](std::size_t) -> void* { return nullptr; });
    EXPECT_EQ(RenderScreen(ScreenStatus::Checking), nullptr);
}

TEST_F(Painting, LeavesThePlaceOfAMissingLogoWhite) {
    LogoBitmap.reset();
    const Picture picture = Paint(ScreenStatus::Installing);
    EXPECT_TRUE(IsFilled(picture, layout_.logo, White));
    EXPECT_FALSE(DrawnText(picture).IsEmptyArea());
    EXPECT_TRUE(IsFilled(picture, layout_.band, LightGrey));
}

TEST_F(Painting, LeavesThePlaceOfALogoThatCouldNotBeDecodedWhite) {
    LogoBitmap = std::make_unique<Gdiplus::Bitmap>(static_cast<IStream*>(nullptr));
    const Picture picture = Paint(ScreenStatus::Installing);
    EXPECT_TRUE(IsFilled(picture, layout_.logo, White));
    EXPECT_FALSE(DrawnText(picture).IsEmptyArea());
}

TEST_P(StatusText, IsTheOneOfTheStatus) {
    const Picture painted = Paint(GetParam().status);
    EXPECT_TRUE(SamePixels(painted, PaintText(GetLocalizedString(GetParam().text))));
    EXPECT_FALSE(painted == PaintText(L"Another text"));
}

INSTANTIATE_TEST_SUITE_P(, StatusText,
                         testing::Values(StatusCase{"Checking", ScreenStatus::Checking, StrCheckingRequirements},
                                         StatusCase{"Installing", ScreenStatus::Installing, StrInstalling},
                                         StatusCase{"Completed", ScreenStatus::Completed, StrInstallCompleted}),
                         [](const auto& item) { return item.param.name; });

TEST_F(Painting, HasNoTextForAnUnknownStatus) {
    for (const int status : {-1, 4, 99}) {
        const Picture picture = Paint(static_cast<ScreenStatus>(status));
        EXPECT_TRUE(DrawnText(picture).IsEmptyArea());
        EXPECT_TRUE(SamePixels(picture, PaintText(L"")));
    }
}

TEST_F(Painting, HasNoTextForAFailureBeforeAnyHasFailed) {
    ErrorText = nullptr;
    EXPECT_TRUE(DrawnText(Paint(ScreenStatus::Failed)).IsEmptyArea());
}

TEST_F(Painting, BeginsItsTextAtTheLeftTopOfTheBox) {
    const Gdiplus::Rect drawn = DrawnText(PaintText(L"HHHH"));
    const int line = 2 * layout_.font;
    EXPECT_GE(drawn.X, layout_.text.X);
    EXPECT_LT(drawn.X, layout_.text.X + line / 2);
    EXPECT_GE(drawn.Y, layout_.text.Y);
    EXPECT_LT(drawn.GetBottom(), layout_.text.Y + line);
}

TEST_F(Painting, WritesInTheFontOfTheWindowIntoTheBox) {
    static Gdiplus::REAL size;
    static INT style;
    static Gdiplus::RectF box;
    static INT flags;
    static Gdiplus::StringAlignment across;
    static Gdiplus::StringAlignment down;
    const ImportPatch<decltype(flat::GdipDrawString)> draw(
        "GdipDrawString",
        [](Gdiplus::GpGraphics*, const WCHAR*, INT, const Gdiplus::GpFont* font, const Gdiplus::RectF* area,
           const Gdiplus::GpStringFormat* format, const Gdiplus::GpBrush*) {
            auto* const asked = const_cast<Gdiplus::GpFont*>(font); // the getters take it so
            flat::GdipGetFontSize(asked, &size);
            flat::GdipGetFontStyle(asked, &style);
            box = *area;
            flat::GdipGetStringFormatFlags(format, &flags);
            flat::GdipGetStringFormatAlign(format, &across);
            flat::GdipGetStringFormatLineAlign(format, &down);
            return Gdiplus::GenericError; // which nobody checks
        });
    Paint(ScreenStatus::Checking);
    EXPECT_EQ(size, static_cast<Gdiplus::REAL>(layout_.font));
    EXPECT_EQ(style, Gdiplus::FontStyleRegular);
    EXPECT_EQ(Gdiplus::Rect(static_cast<INT>(box.X), static_cast<INT>(box.Y), static_cast<INT>(box.Width),
                            static_cast<INT>(box.Height)),
              layout_.text);
    EXPECT_EQ(flags, 0);
    EXPECT_EQ(across, Gdiplus::StringAlignmentNear);
    EXPECT_EQ(down, Gdiplus::StringAlignmentNear);
}

TEST_F(Painting, WrapsTextBetweenWords) {
    std::wstring words;
    for (int i = 0; i < 20; ++i)
        words += L"lengthy ";
    const Gdiplus::Rect one = DrawnText(PaintText(L"lengthy"));
    const Gdiplus::Rect drawn = DrawnText(PaintText(words));
    EXPECT_GT(drawn.Height, 2 * one.Height);
    EXPECT_LE(drawn.GetRight(), layout_.text.GetRight());
    EXPECT_GT(drawn.GetRight(), layout_.text.GetRight() - 2 * one.Width);
    EXPECT_GT(DrawnText(PaintText(L"lengthy\n\nlengthy")).Height, 2 * one.Height);
}

TEST_F(Painting, CutsTextThatIsTooLongAtTheBottomOfTheBox) {
    std::wstring words;
    for (int i = 0; i < 2000; ++i)
        words += L"lengthy ";
    const Picture picture = PaintText(words);
    const Gdiplus::Rect drawn = DrawnText(picture);
    EXPECT_LE(drawn.GetBottom(), layout_.text.GetBottom());
    EXPECT_GT(drawn.GetBottom(), layout_.text.GetBottom() - 2 * layout_.font);
    EXPECT_TRUE(IsFilled(picture, layout_.band, LightGrey));
}

TEST_F(Painting, DrawsEverythingElseWithoutAFont) {
    {
        const ImportPatch<decltype(flat::GdipCreateFont)> create(
            "GdipCreateFont", [](const Gdiplus::GpFontFamily*, Gdiplus::REAL, INT, Gdiplus::Unit, Gdiplus::GpFont**) {
                return Gdiplus::FontFamilyNotFound;
            });
        MakeFonts();
    }
    const Picture picture = PaintText(L"Some text");
    EXPECT_TRUE(DrawnText(picture).IsEmptyArea());
    EXPECT_FALSE(Drawn(picture, layout_.logo).IsEmptyArea());
    EXPECT_TRUE(IsFilled(picture, layout_.band, LightGrey));
    MakeFonts();
}
