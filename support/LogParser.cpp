#include "support/LogParser.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// What an entry begins with: "A" stands for a capital letter, "a" for a small one, "0" for a digit, and "_" for a digit
// or a blank.
constexpr std::wstring_view TimeLayout = L"Aaa Aaa _0 00:00:00 0000 - ";
static_assert(TimeLayout.size() == TimeLength);

bool IsDigit(wchar_t character) {
    return character >= L'0' && character <= L'9';
}

bool FitsIn(wchar_t character, wchar_t place) {
    switch (place) {
    case L'A':
        return character >= L'A' && character <= L'Z';
    case L'a':
        return character >= L'a' && character <= L'z';
    case L'0':
        return IsDigit(character);
    case L'_':
        return IsDigit(character) || character == L' ';
    default:
        return character == place;
    }
}

/// True for the beginning of a time too.
bool HasTimeLayout(std::wstring_view text) {
    const std::size_t length = std::min(text.size(), TimeLength);
    return std::equal(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(length), TimeLayout.begin(), FitsIn);
}

int Number(std::wstring_view digits) {
    int number = 0;
    for (const wchar_t digit : digits)
        number = 10 * number + (digit != L' ' ? digit - L'0' : 0);
    return number;
}

/// The place of a name of three letters in a list of such; nothing when it is not there.
std::optional<unsigned> PlaceOf(std::wstring_view name, std::wstring_view list) {
    for (std::size_t place = 0; 3 * place < list.size(); ++place) {
        if (list.substr(3 * place, 3) == name)
            return static_cast<unsigned>(place);
    }
    return std::nullopt;
}

/// How many of the bytes, at their end, are a UTF-8 character that is cut off.
std::size_t LengthOfCutCharacter(std::string_view bytes) {
    for (std::size_t length = 1; length <= std::min<std::size_t>(3, bytes.size()); ++length) {
        const auto byte = static_cast<unsigned char>(bytes[bytes.size() - length]);
        if (byte >= 0xC0) {
            const std::size_t whole = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
            return length < whole ? length : 0;
        }
        if (byte < 0x80)
            return 0;
    }
    return 0;
}

std::wstring FromUtf8(std::string_view bytes) {
    const auto size = static_cast<int>(bytes.size());
    const int length = MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), length);
    return text;
}

/// The end matters too: it closes what the entry tells.
void DropTheMiddle(std::wstring& text) {
    constexpr std::size_t Kept = LogParser::MaxEntryLength / 4; // at either end
    text.erase(Kept, text.size() - 2 * Kept);
}

bool IsTooLong(const std::wstring& text) {
    return text.size() > LogParser::MaxEntryLength;
}

/// Those at every other place.
std::size_t CountZeros(std::string_view bytes, std::size_t first) {
    std::size_t count = 0;
    for (std::size_t place = first; place < bytes.size(); place += 2)
        count += bytes[place] == '\0' ? 1U : 0U;
    return count;
}

constexpr std::size_t EnoughToDetect = 256; // bytes

} // namespace

std::optional<std::chrono::local_seconds> TimeOfEntry(std::wstring_view text) {
    using namespace std::chrono;
    if (text.size() < TimeLength - 1 || !HasTimeLayout(text))
        return std::nullopt;
    const auto dayOfWeek = PlaceOf(text.substr(0, 3), L"SunMonTueWedThuFriSat");
    const auto month = PlaceOf(text.substr(4, 3), L"JanFebMarAprMayJunJulAugSepOctNovDec");
    if (!dayOfWeek || !month)
        return std::nullopt;
    const year_month_day date(year(Number(text.substr(20, 4))), std::chrono::month(*month + 1),
                              day(static_cast<unsigned>(Number(text.substr(8, 2)))));
    const hours hour(Number(text.substr(11, 2)));
    const minutes minute(Number(text.substr(14, 2)));
    const seconds second(Number(text.substr(17, 2)));
    if (!date.ok() || weekday(local_days(date)) != weekday(*dayOfWeek) || hour >= 24h || minute >= 60min ||
        second > 60s) // a leap second
        return std::nullopt;
    return local_days(date) + hour + minute + second;
}

void LogParser::Feed(std::span<const char> bytes) {
    undecoded_.append(bytes.data(), bytes.size());
    if (encoding_ == Encoding::Unknown && undecoded_.size() >= EnoughToDetect)
        Detect();
    if (encoding_ != Encoding::Unknown)
        Decode();
}

void LogParser::Finish() {
    if (encoding_ == Encoding::Unknown && !undecoded_.empty()) {
        Detect();
        Decode();
    }
    line_.resize(line_.find_last_not_of(L'\0') + 1);
    if (line_.size() < TimeLength && HasTimeLayout(line_))
        line_.clear();
    const bool whole = line_.empty();
    if (!whole)
        EndLine();
    Deliver(whole);
}

void LogParser::Detect() {
    const std::string_view beginning = std::string_view(undecoded_).substr(0, EnoughToDetect);
    const std::size_t even = CountZeros(beginning, 0);
    const std::size_t odd = CountZeros(beginning, 1);
    encoding_ = undecoded_.starts_with("\xFF\xFE") || even + odd != 0 ? Encoding::Utf16 : Encoding::Utf8;
    if (even > odd)
        undecoded_.erase(0, 1); // the second half of a character
}

void LogParser::Decode() {
    std::wstring text;
    if (encoding_ == Encoding::Utf16) {
        text.resize(undecoded_.size() / sizeof(wchar_t));
        std::memcpy(text.data(), undecoded_.data(), text.size() * sizeof(wchar_t));
        undecoded_.erase(0, text.size() * sizeof(wchar_t));
    } else {
        const std::size_t whole = undecoded_.size() - LengthOfCutCharacter(undecoded_);
        text = FromUtf8(std::string_view(undecoded_).substr(0, whole));
        undecoded_.erase(0, whole);
    }
    AddText(text);
}

void LogParser::AddText(std::wstring_view text) {
    for (;;) {
        const std::size_t end = text.find(L'\n');
        line_ += text.substr(0, end);
        if (IsTooLong(line_)) {
            DropTheMiddle(line_);
            isShortened_ = true;
        }
        if (end == std::wstring_view::npos)
            return;
        EndLine();
        text.remove_prefix(end + 1);
    }
}

void LogParser::EndLine() {
    if (std::exchange(isShortened_, false))
        DropTheMiddle(line_); // the same, whatever the pieces were
    constexpr wchar_t ByteOrderMark = L'\xFEFF';
    if (line_.ends_with(L'\r'))
        line_.pop_back();
    // A log begins with it and a line break. So it also ends the last line of a log to which another one was added.
    const bool hasMark = line_.starts_with(ByteOrderMark) || line_.ends_with(ByteOrderMark);
    std::erase(line_, ByteOrderMark);
    if (const auto time = TimeOfEntry(line_)) {
        Deliver(true);
        entry_ = LogEntry{.time = *time,
                          .text = line_.substr(std::min(line_.size(), TimeLength)),
                          .beginsAFile = std::exchange(hadByteOrderMark_, false)};
    } else if (entry_) {
        entry_->text.append(L"\n").append(line_);
        if (IsTooLong(entry_->text))
            DropTheMiddle(entry_->text);
    }
    hadByteOrderMark_ = hadByteOrderMark_ || hasMark;
    isEmpty_ = isEmpty_ && !entry_ && line_.empty();
    line_.clear();
}

void LogParser::Deliver(bool whole) {
    if (!entry_)
        return;
    entry_->whole = whole;
    take_(*entry_);
    entry_.reset();
}
