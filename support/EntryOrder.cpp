#include "support/EntryOrder.h"

#include <algorithm>

namespace {

using enum Says;

/// Entries that no other program's log has: one of these tells that the beginning of this one is missing.
constexpr EntrySet Unmistakable{Title, Searching, NotRunning, Extracting, Waiting, Deleting, Complete};

/// What ends in a description of somebody else's and its code.
constexpr EntrySet Descriptions{NotClosed, Failed, NotStarted};

constexpr EntrySet Values{Value, Setting, Policy};

/// What both threads write, in full, while the other one may be writing.
constexpr EntrySet OfBothThreads{Complete, WaitingForSignal, StartingOneNote, StartedOneNote, Ended};

/// A string is at its end with its kind.
bool EndsAString(std::wstring_view text) {
    return text.ends_with(L" (String)") || text.ends_with(L" (String expand)");
}

bool Ends(std::wstring_view text) {
    return EndsAString(text) || CodeAtEnd(text);
}

/// True when the entry has a string or a description that goes on behind a line break.
bool LeavesOpen(const LogRule& rule, const LogEntry& entry) {
    return entry.whole && ((Descriptions.Contains(rule.says) && !CodeAtEnd(entry.text)) ||
                           (Values.Contains(rule.says) && !rule.Matches(entry.text)));
}

} // namespace

bool EntryOrder::IsInTheLastBlock() const {
    return title_ != nullptr && (title_ + 1)->says != Title;
}

bool EntryOrder::IsBehindTheReport() const {
    return IsInTheLastBlock() && EntrySet{BlockEnd, FileExists, FileMissing, BitnessEnd}.Contains(place_->says);
}

bool EntryOrder::IsBehindAPass() const {
    return place_ != nullptr && EntrySet::Range(Complete, Ended).Contains(place_->says);
}

bool EntryOrder::MayStandHere(const LogRule& rule) const {
    if (rule.says == Running)
        return true;
    if (place_ == nullptr)
        return Unmistakable.Contains(rule.says);
    if (mayHaveSkipped_ && &rule > place_)
        return true;
    if (!rule.after.Contains(place_->says))
        return false;
    if (rule.says == WorkerBegins)
        return IsBehindTheReport();
    return rule.says != Title || title_ == nullptr || &rule > title_;
}

const LogRule* EntryOrder::FindHere(std::wstring_view text) const {
    const auto rules = LogRules();
    const auto found =
        std::ranges::find_if(rules, [&](const LogRule& rule) { return rule.Matches(text) && MayStandHere(rule); });
    if (found != rules.end())
        return &*found;
    const auto open = std::ranges::find_if(rules, [&](const LogRule& rule) {
        return Values.Contains(rule.says) && rule.MayBegin(text) && MayStandHere(rule);
    });
    return open != rules.end() ? &*open : nullptr;
}

const LogRule* EntryOrder::FindInAnEarlierReport(std::wstring_view text) const {
    const auto rules = LogRules();
    const auto found = std::ranges::find_if(rules, [&](const LogRule& rule) {
        return EntrySet{Title, Value}.Contains(rule.says) && rule.Matches(text);
    });
    const bool isEarlier = found != rules.end() && place_ != nullptr && &*found <= place_;
    return isEarlier && !EntrySet::Range(Running, HeadEnd).Contains(place_->says) ? &*found : nullptr;
}

const LogRule* EntryOrder::Take(const LogEntry& entry) {
    wentBack_ = false;
    const LogRule* rule = nullptr;
    if (!isOpen_ || LogRules().front().Matches(entry.text))
        rule = FindHere(entry.text);
    if (rule == nullptr && !isOpen_) {
        rule = FindInAnEarlierReport(entry.text);
        wentBack_ = rule != nullptr;
    }
    if (rule != nullptr)
        Believe(*rule, entry);
    else
        Refuse(entry);
    return rule;
}

void EntryOrder::Believe(const LogRule& rule, const LogEntry& entry) {
    if (rule.says == Title)
        title_ = &rule;
    else if (wentBack_ || rule.says == Running)
        title_ = nullptr; // a string may have imitated titles too: any one may follow
    if (wentBack_)
        ++disbelieved_;
    place_ = &rule;
    isOpen_ = LeavesOpen(rule, entry);
    mayHaveSkipped_ = false;
}

void EntryOrder::Refuse(const LogEntry& entry) {
    const auto rules = LogRules();
    if (place_ == nullptr)
        return; // of a log whose beginning is missing, or of another program's
    if (isOpen_) {
        ++disbelieved_;
        isOpen_ = !Ends(entry.text);
    } else if (!entry.whole && entry.text.find_first_not_of(L' ') == std::wstring::npos) {
        return; // the log is cut off here
    } else if (std::ranges::any_of(rules, [&](const LogRule& rule) { return rule.Matches(entry.text); })) {
        ++disbelieved_;
    } else if (entry.whole ||
               std::ranges::none_of(rules, [&](const LogRule& rule) { return rule.MayBegin(entry.text); })) {
        if (++unknown_ == 1)
            firstUnknown_ = entry.text;
        mayHaveSkipped_ = EntrySet::Range(WorkerBegins, Ended).Contains(place_->says);
    }
}

std::optional<std::vector<std::wstring>> TakeApart(std::wstring_view text) {
    std::vector<std::wstring> texts;
    while (!text.empty()) {
        if (TimeOfEntry(text)) {
            text.remove_prefix(TimeLength);
            continue;
        }
        // A time whose " - " the other thread has cut off.
        if (TimeOfEntry(std::wstring(text.substr(0, TimeLength - 3)) + L" - ")) {
            text.remove_prefix(TimeLength - 3);
            continue;
        }
        if (text.starts_with(L" - ") || text.starts_with(L'\n')) {
            text.remove_prefix(text.front() == L'\n' ? 1 : 3);
            continue;
        }
        const auto rules = LogRules();
        const auto rule = std::ranges::find_if(rules, [text](const LogRule& candidate) {
            return OfBothThreads.Contains(candidate.says) && text.starts_with(candidate.text);
        });
        if (rule == rules.end())
            return std::nullopt;
        texts.emplace_back(rule->text);
        text.remove_prefix(rule->text.size());
    }
    return texts;
}

std::optional<std::uint32_t> CodeAtEnd(std::wstring_view text) {
    constexpr std::wstring_view Beginning = L" (0x";
    const std::size_t beginning = text.rfind(Beginning);
    if (beginning == std::wstring_view::npos || !text.ends_with(L')'))
        return std::nullopt;
    const std::wstring_view digits = text.substr(beginning + Beginning.size(), text.size() - beginning - 5);
    if (digits.empty() || digits.size() > 8 || digits.find_first_not_of(L"0123456789abcdef") != std::wstring_view::npos)
        return std::nullopt;
    std::uint32_t code = 0;
    for (const wchar_t digit : digits)
        code = code * 16 + static_cast<std::uint32_t>(digit >= L'a' ? digit - L'a' + 10 : digit - L'0');
    return code;
}
