#include "support/LogParser.h"

#include "tests/support/SampleLog.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace {

using Texts = std::vector<std::wstring>;

struct Parsed {
    Texts texts;
    bool lastIsWhole = false;
    bool isEmpty = false;
};

Parsed Parse(std::string_view bytes, std::size_t pieceSize = 1000) {
    Parsed parsed;
    LogParser parser([&parsed](const LogEntry& entry) {
        parsed.texts.push_back(entry.text);
        parsed.lastIsWhole = entry.whole;
    });
    for (std::size_t place = 0; place < bytes.size(); place += pieceSize) {
        const std::string_view piece = bytes.substr(place, pieceSize);
        parser.Feed({piece.data(), piece.size()});
    }
    parser.Finish();
    parsed.isEmpty = parser.IsEmpty();
    return parsed;
}

std::string Utf8Bytes(std::wstring_view text) {
    const auto length = static_cast<int>(text.size());
    std::string bytes(4 * text.size(), '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(CP_UTF8, 0, text.data(), length, bytes.data(),
                                                              static_cast<int>(bytes.size()), nullptr, nullptr)));
    return bytes;
}

constexpr wchar_t Time[] = L"Sat Nov 21 21:14:32 2026 - ";

/// Two entries, the second one of two lines, with characters of one to four bytes in UTF-8.
std::wstring TwoEntries() {
    return L"\r\n" + std::wstring(Time) + L"Größe €\r\n" + Time + L"ERROR: 失敗\n\n\xD83D\xDE00 (0x5)";
}

const Texts TwoTexts{L"Größe €", L"ERROR: 失敗\n\n\xD83D\xDE00 (0x5)"};

} // namespace

TEST(LogParser, ReadsUtf16WithAndWithoutAByteOrderMark) {
    EXPECT_EQ(Parse(Utf16Bytes(L"\xFEFF" + TwoEntries())).texts, TwoTexts);
    EXPECT_EQ(Parse(Utf16Bytes(TwoEntries())).texts, TwoTexts);
}

TEST(LogParser, ReadsWhatAnEditorHasSavedAsUtf8) {
    std::wstring text = TwoEntries();
    EXPECT_EQ(Parse(Utf8Bytes(text)).texts, TwoTexts);
    EXPECT_EQ(Parse(Utf8Bytes(L"\xFEFF" + text)).texts, TwoTexts);
    for (std::size_t end = text.find(L'\r'); end != std::wstring::npos; end = text.find(L'\r'))
        text.erase(end, 1);
    EXPECT_EQ(Parse(Utf8Bytes(text)).texts, TwoTexts) << "with the line breaks of another system";
}

TEST(LogParser, ReadsTheSameInPiecesOfAnySize) {
    const std::string utf16 = Utf16Bytes(L"\xFEFF" + TwoEntries());
    const std::string utf8 = Utf8Bytes(L"\xFEFF" + TwoEntries());
    for (std::size_t size = 1; size <= utf16.size(); ++size) {
        EXPECT_EQ(Parse(utf16, size).texts, TwoTexts) << size;
        EXPECT_EQ(Parse(utf8, size).texts, TwoTexts) << size;
    }
}

TEST(LogParser, TakesAnEmptyEntryWithoutTheBlankThatAnEditorTakesAway) {
    EXPECT_EQ(Parse(Utf8Bytes(L"Sat Nov 21 21:14:32 2026 -\nSat Nov 21 21:14:32 2026 - Done.\n")).texts,
              (Texts{L"", L"Done."}));
}

TEST(LogParser, LeavesOutHalfACharacterAtTheBeginning) {
    const std::string bytes = Utf16Bytes(L"xx" + TwoEntries());
    EXPECT_EQ(Parse(std::string_view(bytes).substr(1)).texts, TwoTexts);
}

TEST(LogParser, LeavesOutZerosAtTheEnd) {
    const Parsed parsed = Parse(Utf16Bytes(TwoEntries() + L"\r\n" + std::wstring(400, L'\0')));
    EXPECT_EQ(parsed.texts, TwoTexts);
    EXPECT_TRUE(parsed.lastIsWhole);
    EXPECT_TRUE(Parse(std::string(1000, '\0')).isEmpty);
}

TEST(LogParser, TellsWhereALogWasAddedToAnother) {
    std::vector<bool> begins;
    const std::wstring log = L"\xFEFF\r\n" + std::wstring(Time) + L"a\r\n" + Time + L"b";
    for (const wchar_t* between : {L"", L"\r\n"}) {
        LogParser parser([&begins](const LogEntry& entry) { begins.push_back(entry.beginsAFile); });
        const std::string bytes = Utf16Bytes(std::wstring(log).append(between).append(log));
        parser.Feed({bytes.data(), bytes.size()});
        parser.Finish();
        EXPECT_EQ(std::exchange(begins, {}), (std::vector<bool>{true, false, true, false}));
    }
}

TEST(LogParser, KnowsTheTimeOfAnEntry) {
    std::chrono::local_seconds time;
    LogParser parser([&time](const LogEntry& entry) { time = entry.time; });
    const std::string bytes = Utf16Bytes(L"Wed Feb  9 05:06:07 2028 - x");
    parser.Feed({bytes.data(), bytes.size()});
    parser.Finish();
    using namespace std::chrono;
    EXPECT_EQ(time, local_days(2028y / February / 9) + 5h + 6min + 7s);
}

TEST(LogParser, TakesNoTimeThatIsNone) {
    for (const wchar_t* text :
         {L"Sun Nov 21 21:14:32 2026 - ", L"Sat Nov 31 21:14:32 2026 - ", L"Sat Nox 21 21:14:32 2026 - ",
          L"Sxt Nov 21 21:14:32 2026 - ", L"Sat Nov 21 24:14:32 2026 - ", L"Sat Nov 21 21:60:32 2026 - ",
          L"Sat Nov 21 21:14:61 2026 - ", L"Sat Nov 21 21:14:32 2026 ", L"Sat Nov 21 21:14:32 2026- x",
          L"Sat Nov 021 21:14:32 2026 - ", L"sat Nov 21 21:14:32 2026 - ", L"", L" Sat Nov 21 21:14:32 2026 - "})
        EXPECT_FALSE(TimeOfEntry(text)) << testing::PrintToString(std::wstring(text));
    EXPECT_TRUE(TimeOfEntry(L"Sat Nov 21 21:14:60 2026 - ")) << "a leap second";
}

TEST(LogParser, LeavesOutATimeThatIsCutOff) {
    const std::wstring log = L"\xFEFF\r\n" + std::wstring(Time) + L"Done.\r\n";
    for (std::size_t length = 0; length < std::size(Time) - 1; ++length) {
        const Parsed parsed = Parse(Utf16Bytes(log + std::wstring(Time, length)));
        EXPECT_EQ(parsed.texts, Texts{L"Done."}) << length;
        EXPECT_TRUE(parsed.lastIsWhole) << length;
    }
    EXPECT_EQ(Parse(Utf16Bytes(log + Time)).texts, (Texts{L"Done.", L""}));
}

TEST(LogParser, TellsWhetherTheLastEntryIsWhole) {
    EXPECT_FALSE(Parse(Utf16Bytes(Time + std::wstring(L"Done."))).lastIsWhole);
    EXPECT_TRUE(Parse(Utf16Bytes(Time + std::wstring(L"Done.\r\n"))).lastIsWhole);
}

TEST(LogParser, EndsInTheMiddleOfACharacter) {
    const std::string utf16 = Utf16Bytes(Time + std::wstring(L"Done.x"));
    const Parsed halved = Parse(std::string_view(utf16).substr(0, utf16.size() - 1));
    EXPECT_EQ(halved.texts, Texts{L"Done."});
    const std::string utf8 = Utf8Bytes(Time + std::wstring(L"Done.€"));
    for (const std::size_t missing : {1U, 2U}) {
        const Parsed cut = Parse(std::string_view(utf8).substr(0, utf8.size() - missing));
        EXPECT_EQ(cut.texts, Texts{L"Done."});
    }
}

TEST(LogParser, IsEmptyUntilSomethingOtherThanATimeComes) {
    for (const wchar_t* text : {L"", L"\xFEFF", L"\xFEFF\r\n", L"\xFEFF\r\nSat N", L"S"})
        EXPECT_TRUE(Parse(Utf16Bytes(text)).isEmpty) << testing::PrintToString(std::wstring(text));
    EXPECT_FALSE(Parse(Utf16Bytes(L"\xFEFF\r\nHello\r\n")).isEmpty);
    EXPECT_FALSE(Parse("Hello").isEmpty);
}

TEST(LogParser, DropsTheMiddleOfAnEndlessEntry) {
    const std::wstring beginning = L"Extracting installer to ";
    for (const wchar_t* piece : {L"x", L"x\n"}) {
        std::wstring text = beginning;
        while (text.size() < 3 * LogParser::MaxEntryLength)
            text += piece;
        const Parsed parsed = Parse(Utf16Bytes(Time + text + L"the end"));
        ASSERT_EQ(parsed.texts.size(), 1U);
        EXPECT_TRUE(parsed.texts[0].starts_with(beginning));
        EXPECT_TRUE(parsed.texts[0].ends_with(L"the end"));
        EXPECT_LE(parsed.texts[0].size(), LogParser::MaxEntryLength);
        EXPECT_GT(parsed.texts[0].size(), LogParser::MaxEntryLength / 3);
    }
}
