#include "support/MachineReading.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

using enum Says;

// What the report says of OneNote, and of the ribbon.
constexpr std::array<std::wstring_view, 2> OneNotePrograms{
    LR"(HKCR\CLSID\{D7FAC39E-7FF1-49AA-98CF-A1DDD316337E}\LocalServer32\@)",
    LR"(HKCR\CLSID\{DC67E480-C3CB-49F8-8232-60B0C2056C8E}\LocalServer32\@)",
};
constexpr std::wstring_view OneNoteLibraryVersion =
    LR"(HKCR\Interface\{452AC71A-B655-4967-A208-A4CC39DD7949}\TypeLib\Version)";
constexpr std::wstring_view OfficeLibraryVersion =
    LR"(HKCR\Interface\{000C0396-0000-0000-C000-000000000046}\TypeLib\Version)";
constexpr std::wstring_view ProxyProgram = LR"(HKCR\CLSID\{00020424-0000-0000-C000-000000000046}\InprocServer32\@)";
constexpr std::wstring_view OneNoteLibrary = L"Type library for OneNote.IApplication version ";
constexpr std::wstring_view OfficeLibrary = L"Type library for IRibbonExtensibility version ";

/// A path that is shorter, with its NUL, is none to the installer.
constexpr std::size_t ShortestPath = 5;

/// A string of the report, with the NUL with which it is stored. Empty for what is none.
std::wstring_view WithoutKind(std::wstring_view value) {
    for (const std::wstring_view kind : {L" (String)", L" (String expand)"}) {
        if (value.ends_with(kind))
            return value.substr(0, value.size() - kind.size());
    }
    return {};
}

/// Without the NUL, which many editors show as a blank.
std::wstring_view WithoutNul(std::wstring_view text) {
    text = text.substr(0, text.find(L'\0'));
    return text.substr(0, text.find_last_not_of(L' ') + 1);
}

/// True when the value is one of the two views' entry of that path.
bool IsOfEitherView(std::wstring_view path, std::wstring_view native) {
    constexpr std::wstring_view Root = L"HKCR\\";
    constexpr std::wstring_view View = L"Wow6432Node\\";
    if (path.substr(0, Root.size()) == Root && path.substr(Root.size()).starts_with(View))
        return path.substr(Root.size() + View.size()) == native.substr(Root.size());
    return path == native;
}

/// The installer takes a path as it is: what has a "%", or the number of a resource at its end, names no file.
bool NamesAFile(std::wstring_view path) {
    const std::size_t name = path.find_last_of(L'\\') + 1;
    const std::wstring_view number = path.substr(name, path.find(L'\0', name) - name);
    return path.find(L'%') == std::wstring_view::npos &&
           (number.empty() || number.find_first_not_of(L"0123456789") != std::wstring_view::npos);
}

} // namespace

void MachineReading::Take(const LogRule& rule, const LogRule* title, std::wstring_view text) {
    Registration* const reported = Reported(title);
    isLastValue_ = false;
    switch (rule.says) {
    case Title:
        files_ = 0;
        isOfficeBlock_ = reported == &office_;
        break;
    case Value:
        TakeValue(text);
        break;
    case FileExists:
        --files_;
        break;
    case FileMissing:
        --files_;
        if (reported != nullptr && NamesAFile(rule.InGap(text)))
            reported->fileIsMissing = true;
        break;
    case Win32Native:
    case Win64Native:
        if (const std::wstring_view path = rule.InGap(text); reported == &office_ && !path.empty())
            office_.path = WithoutNul(path);
        break;
    case Says::Is32Bit:
    case Is64Bit:
        is32Bit_ = is32Bit_ || rule.says == Says::Is32Bit;
        if (reported != nullptr)
            reported->bitness = rule.says == Is64Bit ? Registration::Bitness::Is64Bit : Registration::Bitness::Is32Bit;
        break;
    default:
        break;
    }
}

void MachineReading::TakeValue(std::wstring_view text) {
    constexpr std::wstring_view Separator = L" - ";
    text.remove_prefix(std::min<std::size_t>(4, text.size()));
    const std::size_t end = text.find(Separator);
    if (end == std::wstring_view::npos)
        return;
    const std::wstring_view path = text.substr(0, end);
    const std::wstring_view stored = WithoutKind(text.substr(end + Separator.size()));
    const std::wstring_view value = WithoutNul(stored);
    isLastValue_ = path.find(L"Wow6432Node") != std::wstring_view::npos && path.ends_with(L"\\FLAGS\\@");
    if ((path.ends_with(L"\\0\\Win32\\@") || path.ends_with(L"\\0\\Win64\\@")) && stored.size() >= ShortestPath)
        ++files_;
    const bool isOneNote = std::ranges::any_of(
        OneNotePrograms, [path](std::wstring_view program) { return IsOfEitherView(path, program); });
    if (isOneNote && oneNote_.path.empty())
        oneNote_.path = value;
    else if (IsOfEitherView(path, OneNoteLibraryVersion) && oneNoteVersion_.empty())
        oneNoteVersion_ = value;
    else if (IsOfEitherView(path, OfficeLibraryVersion) && officeVersion_.empty())
        officeVersion_ = value;
    else if (path == ProxyProgram)
        proxyIsMissing_ = value.empty();
}

/// What the block is about, when its type library is the one that counts.
Registration* MachineReading::Reported(const LogRule* title) {
    if (title == nullptr)
        return nullptr;
    const std::wstring_view text = title->text;
    if (text.starts_with(OneNoteLibrary) && text.substr(OneNoteLibrary.size()) == oneNoteVersion_)
        return &oneNote_;
    if (text.starts_with(OfficeLibrary) && text.substr(OfficeLibrary.size()) == officeVersion_)
        return &office_;
    return nullptr;
}

/// In the last block stand a line for each path, and what was looked at for the bitness when this is the version that
/// counts.
bool MachineReading::EndsWith(Says last) const {
    if (isOfficeBlock_)
        return EntrySet{Says::Is32Bit, Is64Bit, BitnessEnd}.Contains(last);
    if (EntrySet{BlockEnd, FileExists, FileMissing}.Contains(last))
        return files_ <= 1;
    return last == Value && isLastValue_ && files_ == 0;
}

void MachineReading::Tell(bool isWhole, Findings& findings) const {
    using enum Registration::Bitness;
    findings.oneNote = oneNote_;
    findings.office = office_;
    if (isWhole && oneNote_.bitness == Unknown && oneNote_.path.empty())
        findings.oneNote.bitness = NotRegistered;
    if (isWhole && office_.bitness == Unknown && officeVersion_.empty())
        findings.office.bitness = NotRegistered;
    if (proxyIsMissing_)
        findings.notes.emplace_back(L"Windows is damaged: what every call to OneNote needs is not registered.");
    for (const auto& [registration, name] : {std::pair(&oneNote_, L"OneNote's"), std::pair(&office_, L"Office's")}) {
        if (registration->fileIsMissing)
            findings.notes.push_back(std::wstring(name) +
                                     L" type library names a file that does not exist: repair Office.");
    }
}
