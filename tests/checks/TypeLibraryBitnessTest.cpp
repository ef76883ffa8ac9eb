#include "checks/TypeLibraryBitness.h"

#include "core/Log.h"
#include "core/Unique.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/Registry.h"
#include "tests/support/TestFolder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace {

using namespace std::string_literals;

class TypeLibraryBitness : public LoggedRegistry {
protected:
    /// The entries behind the first block: what was said of files and bitness when that was the only version.
    Entries LoggedBehindTheBlock() const {
        const Entries log = Logged();
        return {std::ranges::find(log, L"") + 1, log.end()};
    }
};

void Store(const std::wstring& subkey, const std::wstring& data) {
    if (!data.empty())
        SetValueOf(HKEY_CLASSES_ROOT, subkey.c_str(), nullptr, REG_SZ, Bytes(data));
}

/// For version 1.1; an empty path is not stored.
void StorePaths(const TypeLibFileList& paths) {
    Store(L"TypeLib\\{L}\\1.1\\0\\Win32", paths.win32Native);
    Store(L"TypeLib\\{L}\\1.1\\0\\Win64", paths.win64Native);
    Store(L"Wow6432Node\\TypeLib\\{L}\\1.1\\0\\Win32", paths.win32Wow64);
    Store(L"Wow6432Node\\TypeLib\\{L}\\1.1\\0\\Win64", paths.win64Wow64);
}

bool Check(const std::vector<std::wstring>& versions, const std::wstring& wanted) {
    return CheckTypeLibraryBitness(L"ISome", L"{L}", versions, wanted);
}

/// The ten lines of a version of which nothing is registered, and the lines around them.
Entries EmptyBlock(const std::wstring& version) {
    Entries block{L"Type library for ISome version " + version};
    for (const wchar_t* view : {L"    HKCR\\", L"    HKCR\\Wow6432Node\\"}) {
        for (const wchar_t* value :
             {L"\\@", L"\\PrimaryInteropAssemblyName", L"\\0\\Win32\\@", L"\\0\\Win64\\@", L"\\FLAGS\\@"})
            block.push_back(view + (L"TypeLib\\{L}\\" + version) + value + L" - Not found");
    }
    block.emplace_back();
    return block;
}

const std::wstring X86 = L"C:\\x86\\a.exe\\3\0"s;
const std::wstring Plain = L"C:\\a.exe\\3\0"s;
const std::wstring EmptyButTerminated = L"\0"s;

struct Verdict {
    const char* name;
    TypeLibFileList files;
    bool only32Bit;
};

class BitnessVerdict : public testing::TestWithParam<Verdict> {};

/// A path as it is stored, and the entry about the file, empty for none; "(file)" stands for a file that exists.
struct RegisteredPath {
    const char* name;
    std::wstring path;
    std::wstring entry;
};

/// With the file of a library.
class TypeLibraryFile : public TypeLibraryBitness {
protected:
    TypeLibraryFile() { std::ofstream(std::filesystem::path(File)) << "x"; }

    std::wstring WithFile(std::wstring text) const {
        if (const std::size_t place = text.find(L"(file)"); place != std::wstring::npos)
            text.replace(place, 6, File);
        return text;
    }

    void RegisterFile() const { RegisterText(L"TypeLib\\{L}\\1.1\\0\\Win32", nullptr, File); }

    /// `others` is what somebody else may do meanwhile: FILE_SHARE_READ, or 0 for nothing.
    UniqueHandle Open(DWORD others) const {
        return UniqueHandle(
            CreateFileW(File.c_str(), GENERIC_READ, others, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    }

private:
    const TestFolder folder_;

protected:
    const std::wstring File = (folder_.Path() / "x86.dll").wstring();
};

class FileCheck : public TypeLibraryFile, public testing::WithParamInterface<RegisteredPath> {};

/// A path that names no file, or names one unusually; "(file)" stands for the file.
struct UnusualPath {
    const char* name;
    std::wstring path;
};

class UnusualFile : public TypeLibraryFile, public testing::WithParamInterface<UnusualPath> {};

const auto NameOf = [](const auto& item) { return item.param.name; };

} // namespace

TEST_F(TypeLibraryBitness, OfNoVersionsIsFalseAndSaysNothing) {
    EXPECT_FALSE(Check({}, L""));
    EXPECT_EQ(Logged(), Entries{});
}

TEST_F(TypeLibraryBitness, ShowsABlockForEachVersionInTheOrderGiven) {
    EXPECT_FALSE(Check({L"1.1", L"1.0"}, L""));
    Entries expected = EmptyBlock(L"1.1");
    std::ranges::copy(EmptyBlock(L"1.0"), std::back_inserter(expected));
    EXPECT_EQ(Logged(), expected);
}

TEST_F(TypeLibraryBitness, ShowsTheRegistrationTheFilesAndTheVerdictOfTheWantedVersion) {
    for (const std::wstring view : {L"", L"Wow6432Node\\"}) {
        const std::wstring key = view + L"TypeLib\\{L}\\1.1";
        RegisterText(key, nullptr, view + L"a");
        RegisterText(key, L"PrimaryInteropAssemblyName", view + L"b");
        RegisterText(key + L"\\0\\Win32", nullptr, L"C:\\none\\x86\\c.dll");
        RegisterText(key + L"\\0\\Win64", nullptr, L"C:\\none\\d.dll\\3");
        RegisterText(key + L"\\FLAGS", nullptr, view + L"e");
    }
    EXPECT_FALSE(Check({L"1.1"}, L"1.1"));
    EXPECT_EQ(Logged(), (Entries{
                            L"Type library for ISome version 1.1",
                            L"    HKCR\\TypeLib\\{L}\\1.1\\@ - a\0 (String)"s,
                            L"    HKCR\\TypeLib\\{L}\\1.1\\PrimaryInteropAssemblyName - b\0 (String)"s,
                            L"    HKCR\\TypeLib\\{L}\\1.1\\0\\Win32\\@ - C:\\none\\x86\\c.dll\0 (String)"s,
                            L"    HKCR\\TypeLib\\{L}\\1.1\\0\\Win64\\@ - C:\\none\\d.dll\\3\0 (String)"s,
                            L"    HKCR\\TypeLib\\{L}\\1.1\\FLAGS\\@ - e\0 (String)"s,
                            L"    HKCR\\Wow6432Node\\TypeLib\\{L}\\1.1\\@ - Wow6432Node\\a\0 (String)"s,
                            L"    HKCR\\Wow6432Node\\TypeLib\\{L}\\1.1\\PrimaryInteropAssemblyName - "
                            L"Wow6432Node\\b\0 (String)"s,
                            L"    HKCR\\Wow6432Node\\TypeLib\\{L}\\1.1\\0\\Win32\\@ - C:\\none\\x86\\c.dll\0 (String)"s,
                            L"    HKCR\\Wow6432Node\\TypeLib\\{L}\\1.1\\0\\Win64\\@ - C:\\none\\d.dll\\3\0 (String)"s,
                            L"    HKCR\\Wow6432Node\\TypeLib\\{L}\\1.1\\FLAGS\\@ - Wow6432Node\\e\0 (String)"s,
                            L"",
                            L"Error: File DOES NOT exist: C:\\none\\x86\\c.dll\0"s,
                            L"Error: File DOES NOT exist: C:\\none\\d.dll",
                            L"Error: File DOES NOT exist: C:\\none\\x86\\c.dll\0"s,
                            L"Error: File DOES NOT exist: C:\\none\\d.dll",
                            L"",
                            L"Checking bitness for this type library",
                            L"Win32 Native: x86 C:\\none\\x86\\c.dll\0"s,
                            L"Win32 Wow64: x86 C:\\none\\x86\\c.dll\0"s,
                            L"Win64 Native: C:\\none\\d.dll\\3\0"s,
                            L"Win64 Wow64: C:\\none\\d.dll\\3\0"s,
                            L"Result: x64 detected",
                            L"",
                        }));
}

TEST_F(TypeLibraryBitness, IsX86WhenTheLibraryIsRegisteredFor32BitProgramsOnly) {
    StorePaths({L"C:\\X86\\a.exe\\3\0"s, L"", L"", L""});
    EXPECT_TRUE(Check({L"1.1"}, L"1.1"));
    EXPECT_EQ(LoggedBehindTheBlock(), (Entries{
                                          L"Error: File DOES NOT exist: C:\\X86\\a.exe",
                                          L"",
                                          L"Checking bitness for this type library",
                                          L"Win32 Native: x86 C:\\X86\\a.exe\\3\0"s,
                                          L"Win32 Wow64: x64 ",
                                          L"Win64 Native: ",
                                          L"Win64 Wow64: ",
                                          L"Result: x86 detected",
                                          L"",
                                      }));
}

TEST_F(TypeLibraryBitness, IsToldOfTheWantedVersionOnly) {
    StorePaths({X86, L"", L"", L""});
    Store(L"TypeLib\\{L}\\1.0\\0\\Win32", Plain);
    EXPECT_TRUE(Check({L"1.0", L"1.1", L"1.2"}, L"1.1"));
    EXPECT_FALSE(Check({L"1.0", L"1.1", L"1.2"}, L"1.0"));
    EXPECT_FALSE(Check({L"1.0", L"1.1", L"1.2"}, L"1.2"));
    EXPECT_EQ(std::ranges::count(Logged(), L"Checking bitness for this type library"), 3);
}

TEST_F(TypeLibraryBitness, IsFalseWhenNoVersionIsTheWantedOneToTheLetter) {
    StorePaths({X86, L"", L"", L""});
    for (const std::wstring& wanted : {L""s, L"1"s, L"1.10"s, L"1.1 "s, L"1.1\0"s, L"2.0"s})
        EXPECT_FALSE(Check({L"1.0", L"1.1"}, wanted));
    EXPECT_EQ(std::ranges::count(Logged(), L"Checking bitness for this type library"), 0);
    EXPECT_EQ(std::ranges::count(Logged(), L"Error: File DOES NOT exist: C:\\x86\\a.exe"), 6);
}

TEST_F(TypeLibraryBitness, CountsWhatCannotBeReadAsMissing) {
    static auto* const Open = ImportedNow<decltype(RegOpenKeyExW)>("RegOpenKeyExW");
    StorePaths({X86, Plain, X86, Plain});
    const ImportPatch<decltype(RegOpenKeyExW)> denied(
        "RegOpenKeyExW", [](HKEY root, LPCWSTR subkey, DWORD options, REGSAM access, PHKEY key) -> LSTATUS {
            const bool is64Bit = std::wstring_view(subkey).ends_with(L"Win64");
            return is64Bit ? ERROR_ACCESS_DENIED : Open(root, subkey, options, access, key);
        });
    EXPECT_TRUE(Check({L"1.1"}, L"1.1"));
    EXPECT_EQ(Logged()[4], L"    HKCR\\TypeLib\\{L}\\1.1\\0\\Win64\\@ - Not found");
}

TEST_F(TypeLibraryBitness, CountsDataThatCannotBeFetchedAsMissing) {
    static auto* const Query = ImportedNow<decltype(RegQueryValueExW)>("RegQueryValueExW");
    StorePaths({X86, L"", L"", L""});
    Store(L"TypeLib\\{L}\\1.1\\0\\Win64", L"D:\\a.exe, which is longer than the other one\0"s);
    const ImportPatch<decltype(RegQueryValueExW)> denied(
        "RegQueryValueExW",
        [](HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE data, LPDWORD size) -> LSTATUS {
            const bool fetchesTheLongOne = type == nullptr && *size > X86.size() * sizeof(wchar_t);
            return fetchesTheLongOne ? ERROR_ACCESS_DENIED : Query(key, name, reserved, type, data, size);
        });
    EXPECT_TRUE(Check({L"1.1"}, L"1.1"));
    EXPECT_EQ(Logged()[4], L"    HKCR\\TypeLib\\{L}\\1.1\\0\\Win64\\@ - Not found");
}

TEST_F(TypeLibraryBitness, TakesANumberInThePlaceOfAPathForNone) {
    StorePaths({X86, L"", L"", L""});
    SetValueOf(HKEY_CLASSES_ROOT, L"TypeLib\\{L}\\1.1\\0\\Win64", nullptr, REG_DWORD, {64, 0, 0, 0});
    EXPECT_TRUE(Check({L"1.1"}, L"1.1"));
    EXPECT_EQ(Logged()[4], L"    HKCR\\TypeLib\\{L}\\1.1\\0\\Win64\\@ - 64 (DWORD)");
}

INSTANTIATE_TEST_SUITE_P(
    , BitnessVerdict,
    testing::Values(Verdict{"NothingRegistered", {}, false}, Verdict{"X86Native", {X86, L"", L"", L""}, true},
                    Verdict{"X86InCapitals", {L"C:\\PROGRAM FILES (X86)\\a.dll", L"", L"", L""}, true},
                    Verdict{"X86InBothViews", {X86, L"", X86, L""}, true},
                    Verdict{"X86InCapitalsInBothViews", {L"C:\\X86\\a", L"", L"C:\\X86\\a", L""}, true},
                    Verdict{"X86NativeButNotInThe32BitView", {X86, L"", Plain, L""}, false},
                    Verdict{"X86InThe32BitViewOnly", {L"", L"", X86, L""}, false},
                    Verdict{"X86InThe32BitViewButNotNative", {Plain, L"", X86, L""}, false},
                    Verdict{"NotX86", {Plain, L"", L"", L""}, false},
                    Verdict{"NotX86InBothViews", {Plain, L"", Plain, L""}, false},
                    Verdict{"Win64Native", {X86, Plain, L"", L""}, false},
                    Verdict{"Win64InThe32BitView", {X86, L"", L"", Plain}, false},
                    Verdict{"Win64InBothViews", {X86, Plain, X86, Plain}, false},
                    Verdict{"Win64InAnX86Folder", {X86, X86, X86, L""}, false},
                    Verdict{"Win64InAnX86FolderInThe32BitView", {X86, L"", X86, X86}, false},
                    Verdict{"Win64OnlyNative", {L"", X86, L"", L""}, false},
                    Verdict{"Win64EmptyButTerminated", {X86, EmptyButTerminated, L"", L""}, false},
                    Verdict{"Win64EmptyButTerminatedInThe32BitView", {X86, L"", L"", EmptyButTerminated}, false},
                    Verdict{"Win32EmptyButTerminated", {EmptyButTerminated, L"", X86, L""}, false},
                    Verdict{"Win32EmptyButTerminatedInThe32BitView", {X86, L"", EmptyButTerminated, L""}, false},
                    Verdict{"X86AtTheStart", {L"x86\\a.dll", L"", L"", L""}, true},
                    Verdict{"X86AtTheEnd", {L"C:\\a.x86", L"", L"", L""}, true},
                    Verdict{"X86WithinAWord", {L"C:\\CommonX86\\a.dll", L"", L"", L""}, true},
                    Verdict{"ShortName", {L"C:\\PROGRA~2\\a.dll", L"", L"", L""}, false},
                    Verdict{"X86Apart", {L"C:\\x 86\\a.dll", L"", L"", L""}, false},
                    Verdict{"X64", {L"C:\\CommonX64\\a.dll", L"", L"", L""}, false},
                    Verdict{"I386", {L"C:\\i386\\86x\\a.dll", L"", L"", L""}, false}),
    NameOf);

TEST_P(BitnessVerdict, IsX86ForX86PathsWithoutAnyFor64Bit) {
    EXPECT_EQ(IsFor32BitOnly(GetParam().files), GetParam().only32Bit);
}

INSTANTIATE_TEST_SUITE_P(
    , FileCheck,
    testing::Values(RegisteredPath{"There", L"(file)\0"s, L"File exists: (file)\0"s},
                    RegisteredPath{"ThereUnterminated", L"(file)", L"File exists: (file)"},
                    RegisteredPath{"ThereBehindItsIndex", L"(file)\\3\0"s, L"File exists: (file)"},
                    RegisteredPath{"UnterminatedIndex", L"(file)\\3", L"Error: File DOES NOT exist: (file)\\3"},
                    RegisteredPath{"AnotherCharacterForTheNul", L"(file)\\3x", L"File exists: (file)"},
                    RegisteredPath{"LongIndexUnterminated", L"(file)\\32", L"File exists: (file)"},
                    RegisteredPath{"AnotherIndex", L"(file)\\2\0"s, L"Error: File DOES NOT exist: (file)\\2\0"s},
                    RegisteredPath{"LongIndex", L"(file)\\33\0"s, L"Error: File DOES NOT exist: (file)\\33\0"s},
                    RegisteredPath{"IndexTwice", L"(file)\\3\\3\0"s, L"Error: File DOES NOT exist: (file)\\3"},
                    RegisteredPath{"Quoted", L"\"(file)\"\0"s, L"Error: File DOES NOT exist: \"(file)\"\0"s},
                    RegisteredPath{"Missing", L"C:\\no such file\0"s,
                                   L"Error: File DOES NOT exist: C:\\no such file\0"s},
                    RegisteredPath{"MissingBehindItsIndex", L"C:\\x\\ONENOTE.EXE\\3\0"s,
                                   L"Error: File DOES NOT exist: C:\\x\\ONENOTE.EXE"},
                    RegisteredPath{"OnlyAnIndex", L"C:\\3\0"s, L"Error: File DOES NOT exist: C:"},
                    RegisteredPath{"Folder", L"C:\\Windows\0"s, L"Error: File DOES NOT exist: C:\\Windows\0"s},
                    RegisteredPath{"FiveCharacters", L"C:\\x\0"s, L"Error: File DOES NOT exist: C:\\x\0"s},
                    RegisteredPath{"FiveCharactersUnterminated", L"C:\\xy", L"Error: File DOES NOT exist: C:\\xy"},
                    RegisteredPath{"FourCharacters", L"C:\\\0"s, L""},
                    RegisteredPath{"FourUnterminated", L"C:\\x", L""}, RegisteredPath{"ThreeCharacters", L"C:\0"s, L""},
                    RegisteredPath{"ThreeCharactersUnterminated", L"C:\\", L""},
                    RegisteredPath{"EmptyButTerminated", EmptyButTerminated, L""}, RegisteredPath{"Empty", L"", L""}),
    NameOf);

TEST_P(FileCheck, SaysWhetherTheFileIsThere) {
    const Entries expected = GetParam().entry.empty() ? Entries{} : Entries{WithFile(GetParam().entry)};
    StorePaths({WithFile(GetParam().path), L"", L"", L""});
    EXPECT_FALSE(Check({L"1.1"}, L""));
    EXPECT_EQ(LoggedBehindTheBlock(), expected);
}

TEST_F(TypeLibraryBitness, ChecksTheFilesInTheOrderOfTheirEntriesAndShowsThemByBitness) {
    StorePaths({L"C:\\none1", L"C:\\none2", L"C:\\none3", L"C:\\none4"});
    EXPECT_FALSE(Check({L"1.1"}, L"1.1"));
    EXPECT_EQ(LoggedBehindTheBlock(), (Entries{
                                          L"Error: File DOES NOT exist: C:\\none1",
                                          L"Error: File DOES NOT exist: C:\\none2",
                                          L"Error: File DOES NOT exist: C:\\none3",
                                          L"Error: File DOES NOT exist: C:\\none4",
                                          L"",
                                          L"Checking bitness for this type library",
                                          L"Win32 Native: x64 C:\\none1",
                                          L"Win32 Wow64: x64 C:\\none3",
                                          L"Win64 Native: C:\\none2",
                                          L"Win64 Wow64: C:\\none4",
                                          L"Result: x64 detected",
                                          L"",
                                      }));
}

TEST_F(TypeLibraryFile, IsTakenForMissingWhenLockedAndDecidesAllTheSame) {
    RegisterFile();
    const UniqueHandle lock = Open(0);
    EXPECT_TRUE(Check({L"1.1"}, L"1.1"));
    EXPECT_EQ(LoggedBehindTheBlock()[0], L"Error: File DOES NOT exist: " + File + L'\0');
}

TEST_F(TypeLibraryFile, IsThereWhenItMayOnlyBeRead) {
    RegisterFile();
    const UniqueHandle reader = Open(FILE_SHARE_READ);
    EXPECT_FALSE(Check({L"1.1"}, L""));
    EXPECT_EQ(LoggedBehindTheBlock()[0], L"File exists: " + File + L'\0');
}

TEST_F(TypeLibraryFile, IsThereWhileSomebodyWritesItButNotWhileSomebodyMayDeleteIt) {
    RegisterFile();
    const std::pair<DWORD, std::wstring> others[] = {{GENERIC_WRITE, L"File exists: "},
                                                     {DELETE, L"Error: File DOES NOT exist: "}};
    for (const auto& [access, verdict] : others) {
        constexpr DWORD Everything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        const UniqueHandle other(CreateFileW(File.c_str(), access, Everything, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(other);
        EXPECT_FALSE(Check({L"1.1"}, L""));
        EXPECT_EQ(Logged().back(), verdict + File + L'\0');
    }
}

TEST_F(TypeLibraryFile, IsNotLeftOpen) {
    RegisterFile();
    EXPECT_FALSE(Check({L"1.1"}, L""));
    EXPECT_EQ(LoggedBehindTheBlock()[0], L"File exists: " + File + L'\0');
    EXPECT_TRUE(Open(0)) << "error " << GetLastError();
}

INSTANTIATE_TEST_SUITE_P(
    , UnusualFile,
    testing::Values(
        UnusualPath{"BlanksBehind", L"(file)  "}, UnusualPath{"DotsBehind", L"(file).."},
        UnusualPath{"BlankBefore", L" (file)"}, UnusualPath{"BackslashBehind", L"(file)\\"},
        UnusualPath{"Wildcard", L"(file)*"}, UnusualPath{"Stream", L"(file):x"},
        UnusualPath{"Literal", L"\\\\?\\(file)"}, UnusualPath{"LiteralWithABlank", L"\\\\?\\(file) "},
        UnusualPath{"ThroughTheDevices", L"\\\\.\\(file)"}, UnusualPath{"NulInTheMiddle", L"(file)\0C:\\no such file"s},
        UnusualPath{"NulBeforeTheFile", L"C:\\no such file\0(file)"s}, UnusualPath{"Relative", L"x86.dll"},
        UnusualPath{"RelativeToTheDrive", L"C:x86.dll"}, UnusualPath{"FolderWithABackslash", L"C:\\Windows\\"},
        UnusualPath{"MissingDrive", L"Q:\\x.tlb"}, UnusualPath{"DeadServer", L"\\\\dead-host\\share\\x.tlb"},
        UnusualPath{"Url", L"https://www.vellumkit.example/x.tlb"}, UnusualPath{"Nul", L"\\\\.\\NUL"},
        UnusualPath{"NulAsAFile", L"C:\\Windows\\NUL"}, UnusualPath{"Console", L"CONIN$"},
        UnusualPath{"SerialPort", L"\\\\.\\COM1"}, UnusualPath{"Disk", L"\\\\.\\PhysicalDrive0"},
        UnusualPath{"Volume", L"\\\\.\\C:"}, UnusualPath{"MissingPipe", L"\\\\.\\pipe\\vellumkit-no-such-pipe"},
        UnusualPath{"VeryLong", L"C:\\" + std::wstring(40000, L'x')},
        UnusualPath{"Variable", L"%SystemRoot%\\win.ini"}),
    NameOf);

TEST_P(UnusualFile, IsThereWhenTheRuntimeLibraryCanOpenIt) {
    const std::wstring path = WithFile(GetParam().path);
    StorePaths({path, L"", L"", L""});
    EXPECT_FALSE(Check({L"1.1"}, L""));
    const bool opens = std::ifstream(std::filesystem::path(path), std::ios::binary).is_open();
    EXPECT_EQ(LoggedBehindTheBlock(), Entries{(opens ? L"File exists: " : L"Error: File DOES NOT exist: ") + path});
}

TEST_F(TypeLibraryFile, ThatIsAPipeIsOpenedOnceAndLetGo) {
    const wchar_t* const name = LR"(\\.\pipe\vellumkit-type-library)";
    const UniqueHandle pipe(CreateNamedPipeW(name, PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE, 1, 64, 64, 0, nullptr));
    ASSERT_TRUE(pipe);
    StorePaths({name, L"", L"", L""});
    EXPECT_FALSE(Check({L"1.1"}, L""));
    EXPECT_EQ(LoggedBehindTheBlock(), Entries{std::wstring(L"File exists: ") + name});
    EXPECT_FALSE(ConnectNamedPipe(pipe.Get(), nullptr));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_NO_DATA}) << "the client should have come and gone";
}

// The time of the entry is when it was known, not when a dead server was asked.
TEST_F(TypeLibraryFile, IsLookedForBeforeItsEntryBegins) {
    static std::vector<Entries> atTheCall;
    atTheCall.clear();
    static LoggedEntries* logged;
    LoggedEntries entries;
    logged = &entries;
    const ImportPatch<decltype(CreateFileW)> open(
        "CreateFileW", [](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE) -> HANDLE {
            Log(true) << L"(opened)";
            atTheCall.push_back(logged->Get());
            return INVALID_HANDLE_VALUE;
        });
    RegisterFile();
    EXPECT_FALSE(Check({L"1.1"}, L""));
    ASSERT_EQ(atTheCall.size(), 1U);
    ASSERT_GE(atTheCall[0].size(), 2U);
    EXPECT_EQ(atTheCall[0][atTheCall[0].size() - 2], L"") << "the end of the block";
}

/// Wine lets every server of a pipe act as its client, so that the request is seen at the call.
TEST_F(TypeLibraryFile, IsOpenedAnonymously) {
    static std::vector<DWORD> asked;
    asked.clear();
    const ImportPatch<decltype(CreateFileW)> open(
        "CreateFileW", [](LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD flags, HANDLE) -> HANDLE {
            asked.push_back(flags);
            return INVALID_HANDLE_VALUE;
        });
    RegisterFile();
    EXPECT_FALSE(Check({L"1.1"}, L""));
    EXPECT_EQ(asked, std::vector<DWORD>{SECURITY_SQOS_PRESENT | SECURITY_ANONYMOUS});
}
