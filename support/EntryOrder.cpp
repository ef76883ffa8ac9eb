#include "support/EntryOrder.h"

#include <algorithm>

namespace {

using enum Says;

/// Entries that no other program's log has: one of these tells that the beginning of this one is missing.
constexpr EntrySet Unmistakable{Title, Searching, NotRunning, Extracting, Waiting, Complete};

/// What ends in a description of somebody else's and its code.
constexpr EntrySet Descriptions{NotClosed, Failed, NotStarted};

constexpr EntrySet Values{Value, Setting, Policy};

/// What repeats a path that stands in a value.
constexpr EntrySet Paths{FileExists, FileMissing, Win32Native, Win32Wow64, Win64Native, Win64Wow64};

constexpr EntrySet TheReport = EntrySet::Range(Title, BitnessEnd);
constexpr EntrySet APass = EntrySet::Range(WorkerBegins, PoliciesEnd);
constexpr EntrySet TheEnd = EntrySet::Range(Complete, Ended);

/// Strings that imitate entries are remembered in this number.
constexpr std::size_t MaxImitations = 8;

/// What both threads write, in full, while the other one may be writing.
constexpr EntrySet OfBothThreads{Complete, WaitingForSignal, StartingOneNote, StartedOneNote, Ended};

/// A string is at its end with its kind, a description with its code.
bool Ends(std::wstring_view text) {
    return text.ends_with(L" (String)") || text.ends_with(L" (String expand)") || CodeAtEnd(text);
}

/// True when the entry has a string or a description that goes on behind a line break.
bool LeavesOpen(const LogRule& rule, const LogEntry& entry) {
    return entry.whole && ((Descriptions.Contains(rule.says) && !CodeAtEnd(entry.text)) ||
                           (Values.Contains(rule.says) && !rule.Matches(entry.text)));
}

std::wstring_view FirstLine(std::wstring_view text) {
    return text.substr(0, text.find(L'\n'));
}

} // namespace

bool EntryOrder::IsInTheLastBlock() const {
    return title_ != nullptr && (title_ + 1)->says != Title;
}

bool EntryOrder::IsBehindAPass() const {
    return place_ != nullptr && TheEnd.Contains(place_->says);
}

bool EntryOrder::MayStandHere(const LogRule& rule) const {
    if (rule.says == Running)
        return place_ == nullptr || IsBehindAPass();
    if (place_ == nullptr)
        return Unmistakable.Contains(rule.says);
    if (mayHaveSkipped_ && &rule > place_)
        return true;
    if (rule.says == WorkerBegins) // a string may have imitated the end of the block
        return TheReport.Contains(place_->says) && (title_ == nullptr || IsInTheLastBlock());
    if (!rule.after.Contains(place_->says))
        return false;
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

/// The nearest one. An empty entry says nothing, and the head is written once.
const LogRule* EntryOrder::FindEarlier(std::wstring_view text) const {
    const LogRule* nearest = nullptr;
    if (place_ == nullptr || text.find_first_not_of(L' ') == std::wstring_view::npos)
        return nearest;
    for (const LogRule& rule : LogRules()) {
        const bool isEarlier = (TheReport.Contains(rule.says) || APass.Contains(rule.says)) && &rule <= place_ &&
                               !EntrySet::Range(Running, HeadEnd).Contains(place_->says);
        const bool contradicts = rule.says == Failed && place_->says > HeadEnd;
        if ((isEarlier || contradicts) && rule.Matches(text))
            nearest = &rule;
    }
    return nearest;
}

/// As a program writes it that knows more languages, or an editor that knows fewer letters.
bool EntryOrder::IsFailureOfAnotherLanguage(std::wstring_view text) const {
    return place_ != nullptr && APass.Contains(place_->says) && text.starts_with(L"ERROR: ") &&
           text.find(L"\n\n") == FirstLine(text).size() && CodeAtEnd(text);
}

const LogRule* EntryOrder::Take(const LogEntry& entry) {
    wentBack_ = false;
    const bool begins = entry.beginsAFile && LogRules().front().Matches(entry.text);
    if (!begins && IsPartOfAString(entry))
        return nullptr;
    const LogRule* rule = begins ? &LogRules().front() : FindHere(entry.text);
    if (rule == nullptr) {
        rule = FindEarlier(entry.text);
        wentBack_ = rule != nullptr;
    }
    if (rule == nullptr && IsFailureOfAnotherLanguage(entry.text)) {
        rule = &*std::ranges::find(LogRules(), Failed, &LogRule::says);
        CountUnknown(entry);
    }
    if (rule != nullptr)
        Believe(*rule, entry);
    else
        Refuse(entry);
    return rule;
}

bool EntryOrder::IsPartOfAString(const LogEntry& entry) {
    if (isOpen_) {
        isOpen_ = !Ends(entry.text);
        if (Values.Contains(place_->says) && !imitations_.empty())
            ++imitations_.back().second;
    } else if (repeated_ != 0) {
        --repeated_;
    } else {
        return false;
    }
    ++disbelieved_;
    return true;
}

void EntryOrder::Believe(const LogRule& rule, const LogEntry& entry) {
    if (rule.says == Title)
        title_ = &rule;
    else if (rule.says == Running || (wentBack_ && TheReport.Contains(rule.says)))
        title_ = nullptr; // any one may follow: what is imitated may have titles too
    if (wentBack_)
        ++disbelieved_;
    place_ = &rule;
    mayHaveSkipped_ = wentBack_;
    repeated_ = 0;
    Open(rule, entry);
}

void EntryOrder::Open(const LogRule& rule, const LogEntry& entry) {
    isOpen_ = LeavesOpen(rule, entry);
    const std::wstring_view line = FirstLine(entry.text);
    if (isOpen_ && rule.says == Value) {
        const std::size_t value = line.find(L" - ");
        imitations_.emplace_back(line.substr(value != std::wstring_view::npos ? value + 3 : 0), 0);
        if (imitations_.size() > MaxImitations)
            imitations_.erase(imitations_.begin());
    } else if (Paths.Contains(rule.says)) {
        for (const auto& [path, entries] : imitations_)
            repeated_ = line.ends_with(L' ' + path) ? entries : repeated_;
    }
}

void EntryOrder::Refuse(const LogEntry& entry) {
    const auto rules = LogRules();
    if (place_ == nullptr)
        return; // of a log whose beginning is missing, or of another program's
    if (!entry.whole && entry.text.find_first_not_of(L' ') == std::wstring::npos)
        return; // the log is cut off here
    if (std::ranges::any_of(rules, [&](const LogRule& rule) { return rule.Matches(entry.text); })) {
        ++disbelieved_;
    } else if (entry.whole ||
               std::ranges::none_of(rules, [&](const LogRule& rule) { return rule.MayBegin(entry.text); })) {
        CountUnknown(entry);
        mayHaveSkipped_ = APass.Contains(place_->says) || TheEnd.Contains(place_->says);
    }
}

void EntryOrder::CountUnknown(const LogEntry& entry) {
    if (++unknown_ == 1)
        firstUnknown_ = entry.text;
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
