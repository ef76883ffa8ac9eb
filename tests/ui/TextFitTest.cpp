// Every text of every language fits its place in the window, measured in the window's own fonts.

#include "app/ErrorTexts.h"
#include "core/ComError.h"
#include "core/LocalizedStrings.h"
#include "core/UiLanguage.h"
#include "tests/support/Layouts.h"
#include "ui/Fonts.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

class TextFit : public testing::TestWithParam<LanguageEntry> {
protected:
    void SetUp() override {
        LoadLocalizedStrings(GetParam().code);
        FillCustomErrorTexts();
    }
    void TearDown() override {
        LoadLocalizedStrings(L"en");
        FillCustomErrorTexts();
    }

    /// What the window shows with the error of that code.
    static std::wstring FailureText(HRESULT error) {
        return GetLocalizedString(StrInstallFailed) + L"\n\n" + ComErrorText(_com_error(error));
    }

    /// Everything that the window can show under its logo in the program's own words.
    static std::vector<std::wstring> StatusTexts() {
        return {GetLocalizedString(StrCheckingRequirements), GetLocalizedString(StrInstalling),
                GetLocalizedString(StrInstallCompleted), FailureText(ErrorReadResource), FailureText(ErrorTempFile)};
    }

    static std::vector<std::wstring> Captions() {
        return {GetLocalizedString(StrClose), GetLocalizedString(StrRetry), GetLocalizedString(StrStartOneNote),
                GetLocalizedString(StrGetHelp)};
    }
};

class WordFit : public TextFit {};

/// In Chinese lines break between any two letters.
std::vector<LanguageEntry> LanguagesWithWords() {
    std::vector<LanguageEntry> languages = SupportedLanguages();
    std::erase_if(languages, [](const LanguageEntry& language) { return language.code.starts_with(L"zh"); });
    return languages;
}

/// What a paragraph takes in a box of that width, in pixels.
Gdiplus::RectF MeasuredParagraph(const std::wstring& text, int width) {
    const HDC screen = GetDC(nullptr);
    Gdiplus::RectF extent;
    {
        const Gdiplus::Graphics graphics(screen);
        const Gdiplus::StringFormat wrapped;
        const Gdiplus::RectF box(0, 0, static_cast<Gdiplus::REAL>(width), 10000);
        EXPECT_EQ(
            graphics.MeasureString(text.c_str(), static_cast<INT>(text.size()), &StatusFont(), box, &wrapped, &extent),
            Gdiplus::Ok);
    }
    ReleaseDC(nullptr, screen);
    return extent;
}

/// What text takes in a box of that width. Its paragraphs are measured one by one and an empty one like a line, since
/// Wine leaves empty lines out.
Gdiplus::SizeF Measured(const std::wstring& text, int width) {
    Gdiplus::SizeF sum;
    for (const std::wstring& paragraph : SplitText(text, L"\n")) {
        const Gdiplus::RectF extent = MeasuredParagraph(paragraph.empty() ? L"X" : paragraph, width);
        sum.Width = std::max(sum.Width, extent.Width);
        sum.Height += extent.Height;
    }
    return sum;
}

/// The width of the widest word. A word that is wider than its box would be broken.
Gdiplus::REAL WidestWord(const std::wstring& text) {
    Gdiplus::REAL width = 0;
    for (const std::wstring& paragraph : SplitText(text, L"\n"))
        for (const std::wstring& word : SplitText(paragraph, L" "))
            width = std::max(width, word.empty() ? 0 : MeasuredParagraph(word, 10000).Width);
    return width;
}

/// A device context with the font of the buttons.
class ControlContext {
public:
    ControlContext() { SelectObject(context_, ControlFont()); }
    ControlContext(const ControlContext&) = delete;
    ControlContext& operator=(const ControlContext&) = delete;
    ~ControlContext() { DeleteDC(context_); }

    SIZE Measure(const std::wstring& caption) const {
        RECT area{};
        DrawTextW(context_, caption.c_str(), -1, &area, DT_CALCRECT | DT_SINGLELINE); // the mnemonic's "&" is no width
        return {area.right, area.bottom};
    }

    bool HasGlyphs(const std::wstring& text) const {
        std::vector<WORD> glyphs(text.size());
        GetGlyphIndicesW(context_, text.c_str(), static_cast<int>(text.size()), glyphs.data(),
                         GGI_MARK_NONEXISTING_GLYPHS);
        return std::ranges::find(glyphs, 0xFFFF) == glyphs.end();
    }

private:
    HDC context_ = CreateCompatibleDC(nullptr);
};

std::string NameOf(const testing::TestParamInfo<LanguageEntry>& item) {
    std::string name;
    for (const wchar_t letter : item.param.code)
        if (letter != L'-')
            name += static_cast<char>(letter);
    return name;
}

} // namespace

TEST_P(TextFit, EveryStatusTextFitsItsBox) {
    const Gdiplus::Rect box = LayoutHere().text;
    for (const std::wstring& text : StatusTexts()) {
        const Gdiplus::SizeF extent = Measured(text, box.Width);
        EXPECT_GT(extent.Height, 0);
        EXPECT_LE(extent.Height, box.Height) << testing::PrintToString(text);
    }
}

TEST_P(WordFit, EveryWordFitsALine) {
    for (const std::wstring& text : StatusTexts())
        EXPECT_LE(WidestWord(text), LayoutHere().text.Width) << testing::PrintToString(text);
}

TEST_P(TextFit, EveryCaptionFitsItsButton) {
    const Gdiplus::Rect button = LayoutHere().primary;
    const int margin = LayoutHere().pixelsPerInch / 16; // on either side, 6 pixels at 96 DPI
    const ControlContext context;
    for (const std::wstring& caption : Captions()) {
        const SIZE extent = context.Measure(caption);
        EXPECT_GT(extent.cx, 0);
        EXPECT_LE(extent.cx, button.Width - 2 * margin) << testing::PrintToString(caption);
        EXPECT_LE(extent.cy, button.Height) << testing::PrintToString(caption);
    }
}

TEST_P(TextFit, NoGlyphIsMissing) {
    const ControlContext context;
    std::vector<std::wstring> texts = StatusTexts();
    std::ranges::copy(Captions(), std::back_inserter(texts));
    for (std::wstring& text : texts) {
        std::erase(text, L'\n');
        EXPECT_FALSE(text.empty());
        EXPECT_TRUE(context.HasGlyphs(text)) << testing::PrintToString(text);
    }
    EXPECT_FALSE(context.HasGlyphs(L"\xFFFE")) << "which is no character";
}

INSTANTIATE_TEST_SUITE_P(, WordFit, testing::ValuesIn(LanguagesWithWords()), NameOf);
INSTANTIATE_TEST_SUITE_P(, TextFit, testing::ValuesIn(SupportedLanguages()), NameOf);
