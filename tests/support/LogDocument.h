#pragma once

#include "tests/support/LogText.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

/// An entry of the log as docs/log.md quotes it, in which "…" stands for any text. Blanks at an entry's end are not
/// quoted.
struct QuotedEntry {
    std::wstring text;
    /// The document's section, without what marks a heading.
    std::wstring section;

    bool Matches(std::wstring_view entry) const;
};

/// All of them, in the document's order.
const std::vector<QuotedEntry>& QuotedEntries();

/// A test failure when an entry of the log is not quoted, or when their order is not that of the quotes. What is
/// repeated may go back: to "Begin processing" a pass that is retried, to its title or first line the next one of
/// several groups of entries, and behind a value or a file to any other of the same block.
/// Returns the quotes of its entries.
std::set<const QuotedEntry*> ExpectDocumented(const Entries& log);
