#include "proof/hostile/Rules.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <iterator>

namespace Rules {

namespace {

using namespace std::string_view_literals;

constexpr std::wstring_view Blanks = L" \t";

std::size_t TakeRunOf(wchar_t character, std::wstring_view& text) {
    const std::size_t length = std::min(text.find_first_not_of(character), text.size());
    text.remove_prefix(length);
    return length;
}

std::wstring TakeProgramName(std::wstring_view& text) {
    const bool quoted = text.starts_with(L'"');
    text.remove_prefix(quoted ? 1 : 0);
    const std::size_t end = std::min(quoted ? text.find(L'"') : text.find_first_of(Blanks), text.size());
    std::wstring name(text.substr(0, end));
    text.remove_prefix(std::min(end + (quoted ? 1 : 0), text.size()));
    return name;
}

std::wstring TakeArgument(std::wstring_view& text) {
    std::wstring argument;
    bool open = false;
    while (!text.empty() && (open || Blanks.find(text.front()) == std::wstring_view::npos)) {
        const std::size_t backslashes = TakeRunOf(L'\\', text);
        std::size_t quotes = TakeRunOf(L'"', text);
        if (backslashes + quotes == 0) {
            argument += text.front();
            text.remove_prefix(1);
        } else if (quotes == 0) {
            argument.append(backslashes, L'\\');
        } else {
            argument.append(backslashes / 2, L'\\').append(backslashes % 2, L'"');
            quotes = quotes - backslashes % 2 + (open ? 1 : 0);
            argument.append(quotes / 3, L'"');
            open = quotes % 3 == 1;
        }
    }
    return argument;
}

std::optional<Value> Find(const Registry& registry, const Place& place) {
    const auto found = registry.find(place);
    return found != registry.end() ? std::optional(found->second) : std::nullopt;
}

bool IsText(const Value& value) {
    return std::wstring_view(L"\1\2\7").find(static_cast<wchar_t>(value.type)) != std::wstring_view::npos &&
           value.type < 8;
}

bool IsReadable(const std::optional<Value>& value) {
    return value && (IsText(*value) || value->type == 4);
}

/// The characters that are there whole.
std::wstring Text(const std::optional<Value>& value) {
    std::wstring text;
    if (value && IsText(*value)) {
        for (std::size_t low = 0; low + 1 < value->bytes.size(); low += 2)
            text += static_cast<wchar_t>(value->bytes[low] + 256 * value->bytes[low + 1]);
    }
    return text;
}

/// Windows hands out nothing of a number that is longer than a number may be.
DWORD Number(const Value& value) {
    DWORD number = 0;
    if (value.bytes.size() <= sizeof number)
        std::ranges::copy(value.bytes, reinterpret_cast<unsigned char*>(&number));
    return number;
}

/// The values below a key, natively and then in the 32-bit view.
std::vector<Place> InBothViews(const std::wstring& key, const std::vector<Place>& values) {
    std::vector<Place> places;
    for (const wchar_t* const view : {L"", L"Wow6432Node\\"}) {
        for (const Place& value : values)
            places.push_back({std::wstring(view).append(key).append(value.key), value.name});
    }
    return places;
}

bool NamesX86(const std::wstring& path) {
    return path.find(L"x86") < path.size() || path.find(L"X86") < path.size();
}

/// Cuts the resource index of OneNote's own library off, with the NUL that follows it.
std::wstring FileOf(const std::wstring& path) {
    const bool indexed = path.size() > 2 && path[path.size() - 3] == L'\\' && path[path.size() - 2] == L'3';
    return indexed ? path.substr(0, path.size() - 3) : path;
}

std::wstring Hexadecimal(DWORD number, const char* digits) {
    std::wstring text;
    do {
        text.insert(text.begin(), static_cast<wchar_t>(digits[number % 16]));
        number /= 16;
    } while (number != 0);
    return text;
}

std::wstring WindowsMessage(HRESULT result) {
    wchar_t* message = nullptr;
    FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                   static_cast<DWORD>(result), 0, reinterpret_cast<wchar_t*>(&message), 0, nullptr);
    std::wstring text = message != nullptr ? message : L"";
    LocalFree(message);
    if (text.size() >= 2 && text.substr(text.size() - 2) == L"\r\n")
        text.erase(text.size() - 2);
    return text;
}

/// COM's own name for an error that Windows has no text for: those of its automation servers have a range.
std::wstring UnknownError(DWORD result) {
    constexpr DWORD First = 0x80040200;
    constexpr DWORD Last = 0x8004FFFF;
    if (result > First && result <= Last)
        return L"IDispatch error #" + std::to_wstring(result - First);
    return L"Unknown error 0x" + Hexadecimal(result, "0123456789ABCDEF");
}

std::wstring Asctime(std::time_t time) {
    std::tm local{};
    localtime_s(&local, &time);
    std::array<wchar_t, 64> text{};
    std::wcsftime(text.data(), text.size(), L"%a %b %d %H:%M:%S %Y", &local);
    if (text[8] == L'0')
        text[8] = L' ';
    return text.data();
}

} // namespace

std::wstring UpToNul(const std::wstring& text) {
    return text.substr(0, text.find(L'\0'));
}

std::vector<std::wstring> Arguments(std::wstring_view commandLine) {
    std::vector<std::wstring> arguments{TakeProgramName(commandLine)};
    for (;;) {
        commandLine.remove_prefix(std::min(commandLine.find_first_not_of(Blanks), commandLine.size()));
        if (commandLine.empty())
            return arguments;
        arguments.push_back(TakeArgument(commandLine));
    }
}

Options OptionsOf(std::wstring_view commandLine) {
    const std::vector<std::wstring> arguments = Arguments(commandLine);
    const auto last = std::prev(arguments.end());
    Options options;
    options.delay = std::find(arguments.begin(), last, L"/delay") != last;
    const auto configuration = std::find(std::reverse_iterator(last), arguments.rend(), L"/config");
    if (configuration != arguments.rend())
        options.configuration = *configuration.base();
    return options;
}

std::wstring LanguageOfName(std::wstring_view localeName) {
    constexpr std::array Codes{L"en"sv, L"zh-CN"sv, L"zh-TW"sv, L"cs"sv, L"nl"sv, L"fr"sv, L"de"sv, L"it"sv,
                               L"nb"sv, L"pl"sv,    L"pt-BR"sv, L"ru"sv, L"sk"sv, L"es"sv, L"tr"sv, L"mk"sv};
    for (const std::wstring_view code : Codes) {
        if (localeName.substr(0, code.size()) == code)
            return std::wstring(code);
    }
    return {};
}

std::wstring LanguageOfIdentifier(DWORD identifier) {
    std::array<wchar_t, LOCALE_NAME_MAX_LENGTH> name{};
    if (identifier != 0)
        GetLocaleInfoW(identifier, LOCALE_SNAME, name.data(), static_cast<int>(name.size()));
    return LanguageOfName(name.data());
}

std::vector<DWORD> Identifiers(const std::wstring& fallback) {
    std::vector<DWORD> identifiers;
    for (const std::wstring& piece : Pieces(fallback, L";")) {
        const wchar_t* character = piece.c_str();
        while (std::iswspace(*character))
            ++character;
        const bool negative = *character == L'-';
        if (negative || *character == L'+')
            ++character;
        long long number = 0;
        for (; *character >= L'0' && *character <= L'9'; ++character)
            number = std::min(10 * number + (*character - L'0'), 1LL << 40);
        number = std::clamp(negative ? -number : number, -0x80000000LL, 0x7FFFFFFFLL);
        identifiers.push_back(static_cast<DWORD>(number));
    }
    return identifiers;
}

std::wstring LanguageOfOffice(const std::optional<Value>& language, const std::optional<Value>& fallback) {
    std::vector<DWORD> identifiers;
    if (language && language->type == 4)
        identifiers.push_back(Number(*language));
    if (fallback && fallback->type == 7)
        std::ranges::copy(Identifiers(Text(fallback)), std::back_inserter(identifiers));
    for (const DWORD identifier : identifiers) {
        if (std::wstring code = LanguageOfIdentifier(identifier); !code.empty())
            return code;
    }
    return {};
}

std::vector<std::wstring> Pieces(const std::wstring& text, const std::wstring& separator) {
    std::vector<std::wstring> pieces(1);
    for (std::size_t place = 0; place < text.size();) {
        if (text.compare(place, separator.size(), separator) == 0) {
            pieces.emplace_back();
            place += separator.size();
        } else {
            pieces.back() += text[place++];
        }
    }
    return pieces;
}

std::wstring Shown(const Registry& registry, const Place& place) {
    const std::optional<Value> value = Find(registry, place);
    if (!IsReadable(value))
        return L"Not found";
    switch (value->type) {
    case 1:
        return Text(value) + L" (String)";
    case 2:
        return Text(value) + L" (String expand)";
    case 4:
        return std::to_wstring(Number(*value)) + L" (DWORD)";
    default:
        return L"<no-value>";
    }
}

Entries Block(const std::wstring& title, const std::wstring& root, const std::vector<Place>& places,
              const Registry& registry) {
    Entries entries{title};
    for (const Place& place : places)
        entries.push_back(std::wstring(L"    ")
                              .append(root)
                              .append(L"\\")
                              .append(place.key)
                              .append(L"\\")
                              .append(place.name.empty() ? L"@" : place.name)
                              .append(L" - ")
                              .append(Shown(registry, place)));
    entries.emplace_back();
    return entries;
}

std::vector<Place> PlacesOfInterface(const std::wstring& identifier) {
    return InBothViews(L"Interface\\" + identifier, {{L"", L""},
                                                     {L"\\ProxyStubClsid", L""},
                                                     {L"\\ProxyStubClsid32", L""},
                                                     {L"\\TypeLib", L""},
                                                     {L"\\TypeLib", L"Version"}});
}

std::wstring LibraryVersion(const std::wstring& interfaceIdentifier, const Registry& registry) {
    const std::vector<Place> places = PlacesOfInterface(interfaceIdentifier);
    const std::optional<Value> native = Find(registry, places[4]);
    return UpToNul(Text(IsReadable(native) ? native : Find(registry, places[9])));
}

std::vector<Place> PlacesOfLibrary(const std::wstring& identifier, const std::wstring& version) {
    return InBothViews(L"TypeLib\\" + identifier + L"\\" + version, {{L"", L""},
                                                                     {L"", L"PrimaryInteropAssemblyName"},
                                                                     {L"\\0\\Win32", L""},
                                                                     {L"\\0\\Win64", L""},
                                                                     {L"\\FLAGS", L""}});
}

LibraryReport ReportOfLibrary(const std::wstring& name, const std::wstring& identifier,
                              const std::vector<std::wstring>& versions, const std::wstring& wanted,
                              const Registry& registry, bool (*opens)(const std::wstring& path)) {
    LibraryReport report;
    const auto log = [&report](const Entries& entries) {
        report.entries.insert(report.entries.end(), entries.begin(), entries.end());
    };
    for (const std::wstring& version : versions) {
        const std::vector<Place> places = PlacesOfLibrary(identifier, version);
        log(Block(std::wstring(L"Type library for ").append(name).append(L" version ").append(version), L"HKCR", places,
                  registry));

        std::array<std::wstring, 4> paths; // Win32 and Win64 natively, then in the 32-bit view
        constexpr std::array<std::size_t, 4> Rows{2, 3, 7, 8};
        for (std::size_t index = 0; index < paths.size(); ++index) {
            paths.at(index) = Text(Find(registry, places.at(Rows.at(index))));
            const std::wstring file = FileOf(paths.at(index));
            if (paths.at(index).size() >= 5)
                log({(opens(UpToNul(file)) ? L"File exists: " : L"Error: File DOES NOT exist: ") + file});
        }
        if (version != wanted)
            continue;
        const auto& [win32, win64, win32Wow, win64Wow] = paths;
        report.only32Bit =
            !(!NamesX86(win32) || (!win32Wow.empty() && !NamesX86(win32Wow)) || !win64.empty() || !win64Wow.empty());
        log({L"", L"Checking bitness for this type library",
             (NamesX86(win32) ? L"Win32 Native: x86 " : L"Win32 Native: x64 ") + win32,
             (NamesX86(win32Wow) ? L"Win32 Wow64: x86 " : L"Win32 Wow64: x64 ") + win32Wow, L"Win64 Native: " + win64,
             L"Win64 Wow64: " + win64Wow, report.only32Bit ? L"Result: x86 detected" : L"Result: x64 detected", L""});
    }
    return report;
}

std::wstring ErrorText(HRESULT result, const std::map<HRESULT, std::wstring>& texts,
                       const std::optional<std::wstring>& description) {
    const auto own = texts.find(result);
    std::wstring message = own != texts.end() ? own->second : L"";
    if (message.empty())
        message = description.value_or(L"");
    if (message.empty())
        message = WindowsMessage(result);
    if (message.empty())
        message = UnknownError(static_cast<DWORD>(result));
    return message + L" (0x" + Hexadecimal(static_cast<DWORD>(result), "0123456789abcdef") + L")";
}

std::wstring ThroughAnsi(const std::wstring& text) {
    std::wstring result;
    for (const wchar_t character : text) {
        std::array<char, 8> ansi{};
        std::array<wchar_t, 8> back{};
        const int size = WideCharToMultiByte(CP_ACP, 0, &character, 1, ansi.data(), 8, nullptr, nullptr);
        result.append(back.data(),
                      static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, ansi.data(), size, back.data(), 8)));
    }
    return result;
}

bool IsTimestamp(std::wstring_view text, std::time_t from, std::time_t to) {
    for (std::time_t time = to; time >= from; --time) {
        if (text == Asctime(time))
            return true;
    }
    return false;
}

} // namespace Rules
