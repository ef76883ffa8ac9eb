#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// One entry of a log.
struct LogEntry {
    /// As the machine's clock showed it there.
    std::chrono::local_seconds time{};
    /// What stands behind the time. Line breaks in it are "\n", and there is none at its end. Of an entry that is
    /// longer than `LogParser::MaxEntryLength` characters the middle is missing.
    std::wstring text;
    /// A line break follows, so that nothing of the entry can be missing.
    bool whole = false;
    /// A byte-order mark stands before it: the first entry of a file, of which several may have been put into one.
    bool beginsAFile = false;
};

/// Makes entries of a file's bytes, which may come in pieces of any size. What it keeps does not grow with the file.
///
/// The text is UTF-16LE, with or without a byte-order mark, as the installer writes it; or UTF-8, as which an editor or
/// a mail program may have saved it, perhaps without the blanks at the ends of lines. Half a character at the beginning
/// is left out, and so are zeros at the end, as a machine leaves them that dies while it writes. An entry begins with a
/// line that begins with a time in the layout of asctime and " - ", and ends before the next one. Throws only when
/// there is no memory left.
class LogParser {
public:
    static constexpr std::size_t MaxEntryLength = 65536;

    explicit LogParser(std::function<void(const LogEntry&)> take) : take_(std::move(take)) {}

    void Feed(std::span<const char> bytes);

    /// The file is at its end: hands on the last entry. A time that is cut off there is left out.
    void Finish();

    /// Nothing but line breaks, or the beginning of a time, has come so far.
    bool IsEmpty() const { return isEmpty_; }

private:
    enum class Encoding { Unknown, Utf16, Utf8 };

    void Detect();
    void Decode();
    void AddText(std::wstring_view text);
    void EndLine();
    void Deliver(bool whole);

    std::function<void(const LogEntry&)> take_;
    Encoding encoding_ = Encoding::Unknown;
    std::string undecoded_;
    std::wstring line_;
    bool isShortened_ = false;
    std::optional<LogEntry> entry_;
    bool isEmpty_ = true;
    bool hadByteOrderMark_ = false;
};

/// The time with which the text begins, if it begins as an entry does. A date that does not exist is none, and neither
/// is one with another day of the week.
std::optional<std::chrono::local_seconds> TimeOfEntry(std::wstring_view text);

/// The length of "Sat Nov 21 21:14:32 2026 - ", in characters. The last blank may be missing at the end of a line.
inline constexpr std::size_t TimeLength = 27;
