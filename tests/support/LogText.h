#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

/// The texts of a log's entries, without line breaks and timestamps.
using Entries = std::vector<std::wstring>;

/// One list after the other.
Entries Joined(std::initializer_list<Entries> lists);

/// The bytes of any file.
std::string ReadBytes(const std::filesystem::path& file);

/// UTF-16LE bytes as text.
std::wstring Utf16(const std::string& bytes);

/// UTF-8 bytes as text.
std::wstring Utf8(const std::string& bytes);

/// The lines of a UTF-8 file; none when there is no such file.
Entries ReadLines(const std::filesystem::path& file);

/// Compares them all, in order. The last ones may come late, so this waits up to 10 seconds for as many as expected.
void ExpectLines(const std::filesystem::path& file, const Entries& expected);

/// A test failure when the text is not made of entries from its first character on (after the byte-order mark, if any).
/// A line break at its end belongs to the next entry, of a program that had no time to write the rest.
Entries ParseEntries(std::wstring log);

/// The entries of a log file.
Entries ReadEntries(const std::filesystem::path& file);

/// What the test's own process logs from the object's construction on.
class LoggedEntries {
public:
    LoggedEntries();
    Entries Get() const;

private:
    std::size_t start_;
};
