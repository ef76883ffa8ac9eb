// Writes to the log as its arguments say, one after the other, in a process of its own: for what is true of a log's
// first opening and of its end. Copied under other names it is another program of the product.
//
//     entry TEXT      begins an entry
//     more TEXT       continues it
//     close           closes the log
//     threads         eight threads make a hundred insertions each; the first of them opens the log
//     close-while-a-thread-writes   the exit code tells whether the close waited for the write (0) or not (1)
//     load FILE       loads a program of this folder as a module
//     remove-folder   removes the folder that stands where the log should be
//     grouping        the program's locale groups digits from now on
//     number          inserts 4294967295
//     zone TEXT       the local time is that of a zone as the variable TZ writes it
//     temp LENGTH     Windows names a temporary folder of so many characters, or can't (0)
//     temp-size       the exit code tells how many of them TempPath takes
//     write-fails     writing to a file fails from now on; write-works: no longer
//     flush-fails     flushing a file fails from now on; flush-works: no longer
//     state           the exit code tells whether the stream still works (0) or failed (1)

#include "core/Log.h"
#include "core/TempPath.h"
#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <locale>
#include <map>
#include <string>
#include <string_view>
#include <thread>

namespace {

constexpr std::wstring_view CommandsWithText[] = {L"entry", L"more", L"load", L"zone", L"temp"};

struct Grouping : std::numpunct<wchar_t> {
    wchar_t do_thousands_sep() const override { return L'.'; }
    std::string do_grouping() const override { return "\3"; }
};

void WriteFromThreads() {
    std::array<std::thread, 8> threads;
    for (std::size_t thread = 0; thread < threads.size(); ++thread) {
        threads.at(thread) = std::thread([thread] {
            for (int entry = 0; entry < 100; ++entry)
                Log(false) << std::wstring(50, static_cast<wchar_t>(L'a' + thread)) + L"|";
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

/// Replaces an import until it is called with null.
template <typename Function>
void Replace(const char* name, Function* replacement) {
    static std::map<std::string, void*> originals;
    void** const slot = FindImport(name);
    void* const original = originals.try_emplace(name, *slot).first->second;
    SetImport(slot, replacement != nullptr ? reinterpret_cast<void*>(replacement) : original);
}

using Write = size_t(const void*, size_t, size_t, FILE*);
using Flush = int(FILE*);
using Close = int(FILE*);

/// True when the file stays open until a write by another thread has ended.
bool CloseWaitsForAWrite() {
    static std::atomic<bool> writing;
    static std::atomic<bool> closed;
    static std::atomic<bool> closedInAWrite;
    Log(false).flush();
    Replace<Write>("fwrite", [](const void*, size_t, size_t count, FILE*) -> size_t {
        writing = true;
        Sleep(300);
        closedInAWrite = closed.load();
        return count;
    });
    Replace<Close>("fclose", [](FILE*) -> int {
        closed = true;
        return 0;
    });
    std::thread writer([] { Log(false) << L"x"; });
    while (!writing)
        std::this_thread::yield();
    CloseLog();
    writer.join();
    return closed && !closedInAWrite;
}

/// A name that doesn't fit leaves no room for its NUL.
void NameTemporaryFolder(DWORD length) {
    static DWORD answer;
    answer = length;
    Replace<decltype(GetTempPathW)>("GetTempPathW", [](DWORD size, wchar_t* buffer) -> DWORD {
        std::fill_n(buffer, std::min(size, answer), L'x');
        return answer;
    });
}

void EnterTimeZone(const wchar_t* zone) {
    _wputenv_s(L"TZ", zone);
    _tzset();
}

/// Returns the program's exit code so far.
int Perform(const std::wstring& command, const wchar_t* text) {
    if (command == L"entry")
        Log(true) << text;
    else if (command == L"more")
        Log(false) << text;
    else if (command == L"close")
        CloseLog();
    else if (command == L"threads")
        WriteFromThreads();
    else if (command == L"close-while-a-thread-writes")
        return CloseWaitsForAWrite() ? 0 : 1;
    else if (command == L"load")
        LoadLibraryExW(text, nullptr, DONT_RESOLVE_DLL_REFERENCES);
    else if (command == L"remove-folder")
        RemoveDirectoryW(TempPath(L"Vellumkit_Install.log").c_str());
    else if (command == L"grouping")
        std::locale::global(std::locale(std::locale(), new Grouping)); // owned by the locale
    else if (command == L"number")
        Log(false) << 4294967295U;
    else if (command == L"zone")
        EnterTimeZone(text);
    else if (command == L"temp")
        NameTemporaryFolder(std::stoul(text));
    else if (command == L"temp-size")
        return static_cast<int>(std::ranges::count(TempPath(L""), L'x'));
    else if (command == L"write-fails")
        Replace<Write>("fwrite", [](const void*, size_t, size_t, FILE*) -> size_t { return 0; });
    else if (command == L"write-works")
        Replace<Write>("fwrite", nullptr);
    else if (command == L"flush-fails")
        Replace<Flush>("fflush", [](FILE*) -> int { return EOF; });
    else if (command == L"flush-works")
        Replace<Flush>("fflush", nullptr);
    else if (command == L"state")
        return Log(false).good() ? 0 : 1;
    else
        return 2;
    return 0;
}

} // namespace

int main() {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    int result = 0;
    for (int index = 1; index < count; ++index) {
        const std::wstring command = arguments[index];
        const bool hasText = std::ranges::count(CommandsWithText, command) != 0;
        const int code = Perform(command, hasText ? arguments[++index] : L"");
        result = code > result ? code : result;
    }
    LocalFree(arguments);
    return result;
}
