#include "tests/support/LogDocument.h"

#include "tests/support/TestFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <iterator>

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

/// The next entry may be any of those around this one.
bool IsOneOfSeveral(const QuotedEntry& quote) {
    const std::wstring_view text = quote.text;
    return text.starts_with(L"    HK") || text.find(L"File ") != std::wstring_view::npos;
}

bool BeginsAGroup(const QuotedEntry& quote) {
    constexpr std::wstring_view Beginnings[] = {L"ProgId for",
                                                L"CLSID for",
                                                L"IID for",
                                                L"Type library for",
                                                L"Begin processing",
                                                L"Deleting",
                                                L"Internet Security Settings"};
    return std::ranges::any_of(Beginnings, [&quote](std::wstring_view text) { return quote.text.starts_with(text); });
}

/// Finds the entries of a log in the document, one after the other.
class Reader {
public:
    /// Null when it is not there in its place.
    const QuotedEntry* Find(const std::wstring& entry) {
        const auto matches = [&entry](const QuotedEntry& quote) { return quote.Matches(entry); };
        if (entry == L"Begin processing")
            place_ = quotes_.begin();
        while (place_ != quotes_.begin() && IsOneOfSeveral(*place_) && IsOneOfSeveral(*std::prev(place_)))
            --place_;
        place_ = std::find_if(place_, quotes_.end(), matches);
        if (place_ == quotes_.end()) {
            place_ = std::find_if(group_, quotes_.end(), [&matches](const QuotedEntry& quote) {
                return BeginsAGroup(quote) && matches(quote);
            });
        }
        if (place_ == quotes_.end())
            return nullptr;
        if (BeginsAGroup(*place_))
            group_ = place_;
        return &*place_;
    }

private:
    const std::vector<QuotedEntry>& quotes_ = QuotedEntries();
    std::vector<QuotedEntry>::const_iterator place_ = quotes_.begin();
    std::vector<QuotedEntry>::const_iterator group_ = quotes_.begin();
};

} // namespace

bool QuotedEntry::Matches(std::wstring_view entry) const {
    return Fits(entry, text);
}

const std::vector<QuotedEntry>& QuotedEntries() {
    static const std::vector<QuotedEntry> Quotes = ReadQuotes();
    return Quotes;
}

std::set<const QuotedEntry*> ExpectDocumented(const Entries& log) {
    Reader reader;
    std::set<const QuotedEntry*> found;
    for (const std::wstring& entry : log) {
        const QuotedEntry* const quote = reader.Find(entry);
        if (quote == nullptr) {
            ADD_FAILURE() << "docs/log.md does not explain here: " << testing::PrintToString(entry);
            break;
        }
        found.insert(quote);
    }
    return found;
}
