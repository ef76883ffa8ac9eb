#pragma once

#include <windows.h>

#include <ctime>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

// The installer's rules, read a second time: nothing here is shared with the installer, and nothing of it is called.
// What both leave to Windows is asked for in another way.
namespace Rules {

/// A value as the registry holds it.
struct Value {
    DWORD type = REG_NONE;
    std::vector<unsigned char> bytes;
};

/// Where a value stands: its key below the root, and its name; "" is the default value.
struct Place {
    std::wstring key;
    std::wstring name;
    bool operator<(const Place& other) const { return std::tie(key, name) < std::tie(other.key, other.name); }
};

using Registry = std::map<Place, Value>;

/// What stands in the log: its entries without line breaks and timestamps.
using Entries = std::vector<std::wstring>;

/// What C sees of a text.
std::wstring UpToNul(const std::wstring& text);

/// Windows' own rules: the first argument is the program's name, in which a backslash is like any character. In the
/// others an even number of backslashes before a quote stands for half of them, an odd one for half of them and a quote
/// that quotes nothing, and of three quotes in a row, one that is open already among them, the third is a character.
/// Only spaces and tabs separate.
std::vector<std::wstring> Arguments(std::wstring_view commandLine);

struct Options {
    std::wstring configuration;
    bool delay = false;
};

Options OptionsOf(std::wstring_view commandLine);

/// The supported language of a locale's name; "" for none.
std::wstring LanguageOfName(std::wstring_view localeName);
std::wstring LanguageOfIdentifier(DWORD identifier);
/// Of an Office with these settings, either of which may be missing.
std::wstring LanguageOfOffice(const std::optional<Value>& language, const std::optional<Value>& fallback);

/// The numbers that the fallback's text names, in order.
std::vector<DWORD> Identifiers(const std::wstring& fallback);

std::vector<std::wstring> Pieces(const std::wstring& text, const std::wstring& separator);

/// A value as the report shows it.
std::wstring Shown(const Registry& registry, const Place& place);

/// A block of the report.
Entries Block(const std::wstring& title, const std::wstring& root, const std::vector<Place>& places,
              const Registry& registry);

std::vector<Place> PlacesOfInterface(const std::wstring& identifier);
std::wstring LibraryVersion(const std::wstring& interfaceIdentifier, const Registry& registry);

std::vector<Place> PlacesOfLibrary(const std::wstring& identifier, const std::wstring& version);

struct LibraryReport {
    Entries entries;
    bool only32Bit = false;
};

/// `opens` tells whether a file can be opened for reading.
LibraryReport ReportOfLibrary(const std::wstring& name, const std::wstring& identifier,
                              const std::vector<std::wstring>& versions, const std::wstring& wanted,
                              const Registry& registry, bool (*opens)(const std::wstring& path));

/// What log and screen say of an error that carries this description, which may be missing.
std::wstring ErrorText(HRESULT result, const std::map<HRESULT, std::wstring>& texts,
                       const std::optional<std::wstring>& description);

/// Text that went through the system's ANSI code page.
std::wstring ThroughAnsi(const std::wstring& text);

/// The time that an entry made between these two would show.
bool IsTimestamp(std::wstring_view text, std::time_t from, std::time_t to);

/// The length of a timestamp.
inline constexpr std::size_t TimestampLength = 24;

} // namespace Rules
