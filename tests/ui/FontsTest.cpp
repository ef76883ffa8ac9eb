#include "ui/Fonts.h"

#include "tests/support/ComApartment.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Layouts.h"
#include "tests/support/LiveObjects.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

namespace flat = Gdiplus::DllExports;

LOGFONTW DescriptionOf(HFONT font) {
    LOGFONTW description{};
    EXPECT_NE(GetObjectW(font, sizeof description, &description), 0);
    return description;
}

std::wstring NameOf(const Gdiplus::FontFamily& family) {
    std::array<wchar_t, LF_FACESIZE> name{};
    family.GetFamilyName(name.data());
    return name.data();
}

std::wstring FamilyOf(const Gdiplus::Font& font) {
    Gdiplus::FontFamily family;
    font.GetFamily(&family);
    return NameOf(family);
}

void ExpectRegularOfItsSize(const Gdiplus::Font& font) {
    ASSERT_EQ(font.GetLastStatus(), Gdiplus::Ok);
    EXPECT_EQ(font.GetSize(), static_cast<Gdiplus::REAL>(LayoutHere().font));
    EXPECT_EQ(font.GetUnit(), Gdiplus::UnitPixel);
    EXPECT_EQ(font.GetStyle(), Gdiplus::FontStyleRegular);
}

/// Makes fonts with replaced functions, and afterwards once more with the real ones.
class Fonts : public testing::Test {
protected:
    void SetUp() override { Recorded.clear(); }
    void TearDown() override { MakeFonts(); }

    /// What the replaced functions were called with.
    static inline std::vector<std::wstring> Recorded;
};

Gdiplus::GpStatus NoFamily(const WCHAR* name, Gdiplus::GpFontCollection* /*fonts*/,
                           Gdiplus::GpFontFamily** /*family*/) {
    EXPECT_STREQ(name, L"Segoe UI");
    return Gdiplus::FontFamilyNotFound;
}

Gdiplus::GpStatus NoFont(const Gdiplus::GpFontFamily* /*family*/, Gdiplus::REAL /*size*/, INT /*style*/,
                         Gdiplus::Unit /*unit*/, Gdiplus::GpFont** /*font*/) {
    return Gdiplus::FontStyleNotFound;
}

} // namespace

TEST_F(Fonts, AreRegularAndOfNinePoints) {
    ExpectRegularOfItsSize(StatusFont());
}

TEST_F(Fonts, HaveTheSameFaceForGdi) {
    const LOGFONTW description = DescriptionOf(ControlFont());
    EXPECT_EQ(description.lfFaceName, FamilyOf(StatusFont()));
    EXPECT_EQ(description.lfHeight, -LayoutHere().font);
    EXPECT_EQ(description.lfWeight, FW_NORMAL);
    EXPECT_FALSE(description.lfItalic || description.lfUnderline || description.lfStrikeOut);
}

TEST_F(Fonts, AreOfTheirOwnFamilyWhereItIsThere) {
    static decltype(&flat::GdipCreateFontFamilyFromName) original;
    original = ImportedNow<decltype(flat::GdipCreateFontFamilyFromName)>("GdipCreateFontFamilyFromName");
    const ImportPatch<decltype(flat::GdipCreateFontFamilyFromName)> create(
        "GdipCreateFontFamilyFromName",
        [](const WCHAR* /*name*/, Gdiplus::GpFontCollection* fonts, Gdiplus::GpFontFamily** family) {
            return original(L"Marlett", fonts, family); // every Windows has it, and it is not the generic one
        });
    MakeFonts();
    EXPECT_EQ(FamilyOf(StatusFont()), L"Marlett");
}

TEST_F(Fonts, AreOfTheGenericFamilyAtTheSameSizeAndStyleWhereTheirOwnIsMissing) {
    const ImportPatch<decltype(flat::GdipCreateFontFamilyFromName)> create("GdipCreateFontFamilyFromName", NoFamily);
    MakeFonts();
    ExpectRegularOfItsSize(StatusFont());
    EXPECT_EQ(FamilyOf(StatusFont()), NameOf(*Gdiplus::FontFamily::GenericSansSerif()));
}

TEST_F(Fonts, AreTriedOnceMoreWithTheGenericFamilyWhenTheyCannotBeMade) {
    static decltype(&flat::GdipCreateFont) original;
    original = ImportedNow<decltype(flat::GdipCreateFont)>("GdipCreateFont");
    const ImportPatch<decltype(flat::GdipCreateFont)> create(
        "GdipCreateFont", [](const Gdiplus::GpFontFamily* family, Gdiplus::REAL size, INT style, Gdiplus::Unit unit,
                             Gdiplus::GpFont** font) {
            std::array<wchar_t, LF_FACESIZE> name{};
            flat::GdipGetFamilyName(family, name.data(), LANG_NEUTRAL);
            Recorded.emplace_back(name.data());
            return Recorded.size() == 1 ? NoFont(family, size, style, unit, font)
                                        : original(family, size, style, unit, font);
        });
    MakeFonts();
    ASSERT_EQ(Recorded.size(), 2U);
    EXPECT_EQ(Recorded[1], NameOf(*Gdiplus::FontFamily::GenericSansSerif()));
    EXPECT_EQ(StatusFont().GetLastStatus(), Gdiplus::Ok);
}

TEST_F(Fonts, AreEmptyAndKeepTheirFailureWhenTheGenericFamilyFailsToo) {
    const ImportPatch<decltype(flat::GdipCreateFont)> create("GdipCreateFont", NoFont);
    MakeFonts();
    EXPECT_NE(StatusFont().GetLastStatus(), Gdiplus::Ok);
}

TEST_F(Fonts, AreMadeWithoutMemoryOfTheirOwn) {
    const ImportPatch<decltype(flat::GdipAlloc)> alloc("GdipAlloc", [](std::size_t) -> void* { return nullptr; });
    MakeFonts();
    ExpectRegularOfItsSize(StatusFont());
}

TEST_F(Fonts, GetAHandleFromAnUnfilledDescriptionWhenItCannotBeHad) {
    static std::vector<LOGFONTW> descriptions;
    descriptions.clear();
    const ImportPatch<decltype(flat::GdipGetLogFontW)> describe(
        "GdipGetLogFontW", [](Gdiplus::GpFont*, Gdiplus::GpGraphics*, LOGFONTW*) { return Gdiplus::GenericError; });
    const ImportPatch<decltype(CreateFontIndirectW)> create("CreateFontIndirectW", [](const LOGFONTW* description) {
        descriptions.push_back(*description);
        return static_cast<HFONT>(nullptr);
    });
    MakeFonts();
    ASSERT_EQ(descriptions.size(), 1U);
    const LOGFONTW unfilled{};
    EXPECT_EQ(std::memcmp(descriptions.data(), &unfilled, sizeof unfilled), 0);
    EXPECT_EQ(ControlFont(), nullptr);
    EXPECT_EQ(StatusFont().GetLastStatus(), Gdiplus::GenericError);
}

TEST(Graphics, AreStartedInASingleThreadedApartment) {
    EXPECT_TRUE(EntersSingleThreadedApartment(StartGraphics));
}

TEST(Graphics, AreStartedWithTheirDefaultsAndWithoutALookAtTheAnswer) {
    static Gdiplus::GdiplusStartupInput input;
    static bool withOutput;
    static decltype(&Gdiplus::GdiplusStartup) original;
    original = ImportedNow<decltype(Gdiplus::GdiplusStartup)>("GdiplusStartup");
    const ImportPatch<decltype(Gdiplus::GdiplusStartup)> start(
        "GdiplusStartup",
        [](ULONG_PTR* token, const Gdiplus::GdiplusStartupInput* given, Gdiplus::GdiplusStartupOutput* output) {
            input = *given;
            withOutput = output != nullptr;
            original(token, given, output);
            return Gdiplus::GenericError; // which nobody checks
        });
    StartGraphics();
    EXPECT_EQ(input.GdiplusVersion, 1U);
    EXPECT_EQ(input.DebugEventCallback, nullptr);
    EXPECT_FALSE(input.SuppressBackgroundThread);
    EXPECT_FALSE(input.SuppressExternalCodecs);
    EXPECT_FALSE(withOutput);
}

TEST_F(Fonts, AreAllThatIsLeftOfWhatTheyAreMadeFrom) {
    {
        const LiveGraphics graphics;
        MakeFonts();
        EXPECT_GT(LiveGraphics::CountMade(), 1U);
        EXPECT_EQ(LiveGraphics::Count(), 1U) << "the font";
        MakeFonts();
        EXPECT_EQ(LiveGraphics::Count(), 1U) << "the second font, which replaces the first one";
    }
    const LiveDeviceContexts contexts;
    MakeFonts();
    EXPECT_GT(LiveDeviceContexts::CountMade(), 0U);
    EXPECT_EQ(LiveDeviceContexts::Count(), 0U);
}
