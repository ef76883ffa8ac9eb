#include "tests/support/LogDocument.h"

#include "tests/support/TestFolder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

constexpr wchar_t AnyText = L'…';

bool Fits(std::wstring_view entry, std::wstring_view quote) {
    const std::size_t gap = quote.find(AnyText);
    if (gap == std::wstring_view::npos)
        return entry.substr(0, entry.find_last_not_of(L' ') + 1) == quote;
    if (!entry.starts_with(quote.substr(0, gap)))
        return false;
    for (std::size_t end = gap; end <= entry.size(); ++end) {
        if (Fits(entry.substr(end), quote.substr(gap + 1)))
            return true;
    }
    return false;
}

/// What stands in the document's blocks of text, under its headings of the second level.
std::vector<QuotedEntry> ReadQuotes() {
    std::vector<QuotedEntry> quotes;
    std::wstring section;
    bool inBlock = false;
    for (const std::wstring& line : ReadLines(ProgramFolder() / "log.md")) {
        if (line == L"```text")
            inBlock = true;
        else if (line == L"```")
            inBlock = false;
        else if (inBlock)
            quotes.push_back({line, section});
        else if (line.starts_with(L"## "))
            section = line.substr(3);
    }
    return quotes;
}

} // namespace

bool QuotedEntry::Matches(std::wstring_view entry) const {
    return Fits(entry, text);
}

const std::vector<QuotedEntry>& QuotedEntries() {
    static const std::vector<QuotedEntry> Quotes = ReadQuotes();
    return Quotes;
}

void ExpectDocumented(const Entries& log) {
    const std::vector<QuotedEntry>& quotes = QuotedEntries();
    auto section = quotes.begin(); // its first quote
    for (const std::wstring& entry : log) {
        const auto matches = [&entry](const QuotedEntry& quote) { return quote.Matches(entry); };
        const auto from = entry == L"Begin processing" ? quotes.begin() : section;
        const auto quote = std::find_if(from, quotes.end(), matches);
        if (quote == quotes.end()) {
            ADD_FAILURE() << "docs/log.md does not explain here: " << testing::PrintToString(entry);
            return;
        }
        section = std::ranges::find(quotes, quote->section, &QuotedEntry::section);
    }
}
