#include "ui/Fonts.h"

#include "tests/support/ImportPatch.h"
#include "tests/support/Layouts.h"

#include <array>
#include <cstring>
#include <gtest/gtest.h>

namespace {

struct FontCase {
    const char* name;
    std::size_t index;
    INT style;
};

class Font : public testing::TestWithParam<FontCase> {};

LOGFONTW DescriptionOf(HFONT font) {
    LOGFONTW description{};
    EXPECT_NE(GetObjectW(font, sizeof description, &description), 0);
    return description;
}

namespace flat = Gdiplus::DllExports;

std::wstring NameOf(const Gdiplus::FontFamily& family) {
    std::array<wchar_t, LF_FACESIZE> name{};
    family.GetFamilyName(name.data());
    return name.data();
}

/// Starts graphics with replaced functions, and afterwards once more with the real ones.
class Fonts : public testing::Test {
protected:
    void SetUp() override { Recorded.clear(); }
    void TearDown() override { StartGraphics(); }

    /// What the replaced functions were called with.
    static inline std::vector<std::wstring> Recorded;
};

Gdiplus::GpStatus NoFamily(const WCHAR* /*name*/, Gdiplus::GpFontCollection* /*fonts*/,
                           Gdiplus::GpFontFamily** /*family*/) {
    return Gdiplus::FontFamilyNotFound;
}

Gdiplus::GpStatus NoFont(const Gdiplus::GpFontFamily* /*family*/, Gdiplus::REAL /*size*/, INT /*style*/,
                         Gdiplus::Unit /*unit*/, Gdiplus::GpFont** /*font*/) {
    return Gdiplus::FontStyleNotFound;
}

} // namespace

TEST_P(Font, HasItsSizeAndStyleInPixels) {
    const FontCase& item = GetParam();
    const Gdiplus::Font& font = FontAt(item.index);
    ASSERT_EQ(font.GetLastStatus(), Gdiplus::Ok);
    EXPECT_EQ(font.GetSize(), static_cast<Gdiplus::REAL>(LayoutHere().fonts.at(item.index)));
    EXPECT_EQ(font.GetUnit(), Gdiplus::UnitPixel);
    EXPECT_EQ(font.GetStyle(), item.style);
}

TEST_P(Font, HasTheSameHandleForGdi) {
    const FontCase& item = GetParam();
    const LOGFONTW description = DescriptionOf(FontHandleAt(item.index));
    EXPECT_EQ(description.lfHeight, -LayoutHere().fonts.at(item.index));
    EXPECT_EQ(description.lfWeight, (item.style & Gdiplus::FontStyleBold) != 0 ? FW_BOLD : FW_NORMAL);
    EXPECT_EQ(description.lfUnderline != 0, (item.style & Gdiplus::FontStyleUnderline) != 0);
}

INSTANTIATE_TEST_SUITE_P(, Font,
                         testing::Values(FontCase{"OfText", 0, Gdiplus::FontStyleRegular},
                                         FontCase{"Bold", 1, Gdiplus::FontStyleBold},
                                         FontCase{"Underlined", 2, Gdiplus::FontStyleUnderline},
                                         FontCase{"Large", 3, Gdiplus::FontStyleRegular},
                                         FontCase{"OfSigns", 4, Gdiplus::FontStyleRegular},
                                         FontCase{"OfFixedWidth", 5, Gdiplus::FontStyleRegular}),
                         [](const auto& item) { return item.param.name; });

TEST_F(Fonts, AreSixAndTheFirstIsTheControlFont) {
    EXPECT_EQ(FontCount, 6U);
    EXPECT_NE(ControlFont(), nullptr);
    EXPECT_EQ(ControlFont(), FontHandleAt(0));
}

TEST_F(Fonts, AreOfTheseFamiliesInThisOrder) {
    const ImportPatch<decltype(flat::GdipCreateFontFamilyFromName)> create(
        "GdipCreateFontFamilyFromName",
        [](const WCHAR* name, Gdiplus::GpFontCollection* fonts, Gdiplus::GpFontFamily** family) {
            Recorded.emplace_back(name);
            return NoFamily(name, fonts, family);
        });
    StartGraphics();
    EXPECT_EQ(Recorded,
              (std::vector<std::wstring>{L"Segoe UI", L"Segoe UI", L"Segoe UI", L"Segoe UI", L"Marlett", L"Consolas"}));
}

TEST_F(Fonts, AreOfTheGenericFamilyAtTheSameSizeAndStyleWhereTheirOwnIsMissing) {
    const ImportPatch<decltype(flat::GdipCreateFontFamilyFromName)> create("GdipCreateFontFamilyFromName", NoFamily);
    StartGraphics();
    for (std::size_t index = 0; index < FontCount; ++index) {
        const Gdiplus::Font& font = FontAt(index);
        ASSERT_EQ(font.GetLastStatus(), Gdiplus::Ok);
        EXPECT_EQ(font.GetSize(), static_cast<Gdiplus::REAL>(LayoutHere().fonts.at(index)));
        Gdiplus::FontFamily family;
        font.GetFamily(&family);
        EXPECT_EQ(NameOf(family), NameOf(*Gdiplus::FontFamily::GenericSansSerif()));
    }
    EXPECT_EQ(FontAt(1).GetStyle(), Gdiplus::FontStyleBold);
    EXPECT_EQ(FontAt(2).GetStyle(), Gdiplus::FontStyleUnderline);
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
            return Recorded.size() % 2 != 0 ? NoFont(family, size, style, unit, font)
                                            : original(family, size, style, unit, font);
        });
    StartGraphics();
    ASSERT_EQ(Recorded.size(), 2 * FontCount);
    for (std::size_t second = 1; second < Recorded.size(); second += 2)
        EXPECT_EQ(Recorded[second], NameOf(*Gdiplus::FontFamily::GenericSansSerif()));
    EXPECT_EQ(FontAt(0).GetLastStatus(), Gdiplus::Ok);
}

TEST_F(Fonts, AreEmptyAndKeepTheirFailureWhenTheGenericFamilyFailsToo) {
    const ImportPatch<decltype(flat::GdipCreateFont)> create("GdipCreateFont", NoFont);
    StartGraphics();
    for (std::size_t index = 0; index < FontCount; ++index)
        EXPECT_NE(FontAt(index).GetLastStatus(), Gdiplus::Ok);
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
    StartGraphics();
    ASSERT_EQ(descriptions.size(), FontCount);
    const LOGFONTW unfilled{};
    for (const LOGFONTW& description : descriptions)
        EXPECT_EQ(std::memcmp(&description, &unfilled, sizeof description), 0);
    EXPECT_EQ(ControlFont(), nullptr);
    EXPECT_EQ(FontAt(0).GetLastStatus(), Gdiplus::GenericError);
}

TEST_F(Fonts, AreMadeWithGraphicsStartedByDefault) {
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
    EXPECT_EQ(FontAt(0).GetLastStatus(), Gdiplus::Ok);
}
