#pragma once

#include "support/LogParser.h"
#include "support/Rules.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Decides which entries of a log are the installer's.
///
/// Strings of the registry and descriptions of errors stand in the log as they are: a line break in them, followed by a
/// time, looks like an entry. So an entry is believed where the installer writes it: right behind those that its rule
/// names, and not before such a string has come to its end. What a string imitates stands before what the installer
/// wrote next: an entry of an earlier place shows that those since were none, and it is the later one that is believed.
class EntryOrder {
public:
    /// The rule of the entry, null when it is not believed. The entries of a log come one after the other.
    const LogRule* Take(const LogEntry& entry);

    /// The entry that came last is of an earlier place: what was believed since is none of the installer's.
    bool WentBack() const { return wentBack_; }

    /// The title of the block of the report that is read, or was last; null before the first one.
    const LogRule* Block() const { return title_; }

    /// It is the report's last block, or came behind it.
    bool IsInTheLastBlock() const;

    /// Two threads may be writing.
    bool IsBehindAPass() const;

    std::size_t Disbelieved() const { return disbelieved_; }

    /// How many entries no rule knows.
    std::size_t Unknown() const { return unknown_; }

    /// The first one of these.
    const std::wstring& FirstUnknown() const { return firstUnknown_; }

private:
    const LogRule* FindHere(std::wstring_view text) const;
    const LogRule* FindEarlier(std::wstring_view text) const;
    bool IsFailureOfAnotherLanguage(std::wstring_view text) const;
    bool MayStandHere(const LogRule& rule) const;
    bool IsPartOfAString(const LogEntry& entry);
    void Believe(const LogRule& rule, const LogEntry& entry);
    void Open(const LogRule& rule, const LogEntry& entry);
    void Refuse(const LogEntry& entry);
    void CountUnknown(const LogEntry& entry);

    const LogRule* place_ = nullptr;
    const LogRule* title_ = nullptr;
    /// A string or a description that is not at its end yet.
    bool isOpen_ = false;
    /// Strings of the report that went on behind a line break, the first line of each and how many entries it imitated:
    /// a path is written more than once. The last few.
    std::vector<std::pair<std::wstring, std::size_t>> imitations_;
    /// So many entries belong to such a path.
    std::size_t repeated_ = 0;
    bool wentBack_ = false;
    /// Something unknown came, so that entries may be missing.
    bool mayHaveSkipped_ = false;
    std::size_t disbelieved_ = 0;
    std::size_t unknown_ = 0;
    std::wstring firstUnknown_;
};

/// Where two threads have written at the same time, what one wrote may stand in an entry of the other: the texts of the
/// entries that are mixed up in this one. Nothing when there is anything else in it.
std::optional<std::vector<std::wstring>> TakeApart(std::wstring_view text);

/// The HRESULT in parentheses with which the description of an error ends.
std::optional<std::uint32_t> CodeAtEnd(std::wstring_view text);
