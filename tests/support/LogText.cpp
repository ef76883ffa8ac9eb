#include "tests/support/LogText.h"

#include "core/Log.h"
#include "core/TempPath.h"

#include <windows.h>

#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <regex>

namespace {

std::string OwnLog() {
    Log(false).flush();
    return ReadBytes(TempPath(L"Vellumkit_Install.log"));
}

} // namespace

Entries Joined(std::initializer_list<Entries> lists) {
    Entries joined;
    for (const Entries& list : lists)
        joined.insert(joined.end(), list.begin(), list.end());
    return joined;
}

std::string ReadBytes(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::wstring Utf16(const std::string& bytes) {
    std::wstring text(bytes.size() / sizeof(wchar_t), L'\0');
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(wchar_t));
    return text;
}

std::wstring Utf8(const std::string& bytes) {
    const auto size = static_cast<int>(bytes.size());
    std::wstring text(static_cast<std::size_t>(MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), static_cast<int>(text.size()));
    return text;
}

Entries ReadLines(const std::filesystem::path& file) {
    Entries lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(Utf8(line));
    return lines;
}

void ExpectLines(const std::filesystem::path& file, const Entries& expected) {
    const ULONGLONG end = GetTickCount64() + 10000;
    while (ReadLines(file).size() < expected.size() && GetTickCount64() < end)
        Sleep(20);
    EXPECT_EQ(ReadLines(file), expected);
}

Entries ParseEntries(std::wstring log) {
    if (log.starts_with(L'\xFEFF'))
        log.erase(0, 1);
    if (log.ends_with(L"\r\n"))
        log.resize(log.size() - 2);
    static const std::wregex EntryStart(
        LR"(\r\n(Sun|Mon|Tue|Wed|Thu|Fri|Sat) [A-Z][a-z]{2} [ \d]\d \d\d:\d\d:\d\d \d{4} - )");
    const std::wsregex_iterator end;
    std::wsregex_iterator entry(log.begin(), log.end(), EntryStart);
    EXPECT_TRUE(log.empty() || (entry != end && entry->position() == 0))
        << "The log begins with something else than an entry: " << testing::PrintToString(log);
    Entries entries;
    while (entry != end) {
        const auto text = static_cast<std::size_t>(entry->position() + entry->length());
        ++entry;
        entries.push_back(
            log.substr(text, entry != end ? static_cast<std::size_t>(entry->position()) - text : std::wstring::npos));
    }
    return entries;
}

Entries ReadEntries(const std::filesystem::path& file) {
    return ParseEntries(Utf16(ReadBytes(file)));
}

LoggedEntries::LoggedEntries() : start_(OwnLog().size()) {}

Entries LoggedEntries::Get() const {
    return ParseEntries(Utf16(OwnLog().substr(start_)));
}
