// Is loaded into the installer's process before its entry point runs, and stands between it and every function that it
// imports or looks up: counts the calls, tells the launcher what the installer is at, makes the long waits short, looks
// at each payload that is started, and lets one call fail.

#include "core/Unique.h"
#include "proof/faults/Exchange.h"
#include "proof/faults/Functions.h"
#include "proof/faults/Thunk.h"
#include "tests/support/ImportTable.h"

#include <windows.h>

#include <shellapi.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>

namespace {

Exchange* TheExchange = nullptr;

/// What a thread wrote into the log last, and what it is at.
struct ThreadState {
    volatile LONG id = 0;
    Step step = Step::StartUp;
    /// Insertions since the entry began: line break, time, " - ", text.
    unsigned insertions = 0;
    std::array<wchar_t, 48> entry{};
    std::size_t length = 0;
};

std::array<ThreadState, 64> Threads;
bool OneNoteIsTerminated = false;

ThreadState& ThisThread() {
    const auto id = static_cast<LONG>(GetCurrentThreadId());
    for (ThreadState& thread : Threads) {
        const LONG owner = InterlockedCompareExchange(&thread.id, id, 0);
        if (owner == 0 && GetCurrentThreadId() != TheExchange->mainThread)
            thread.step = Step::Search; // the worker, with which its pass begins
        if (owner == 0 || owner == id)
            return thread;
    }
    return Threads.back();
}

Step StepOf(std::wstring_view entry, Step before) {
    struct Beginning {
        std::wstring_view entry;
        Step step;
    };
    constexpr std::array Beginnings{
        Beginning{L"Running ", Step::Report},          Beginning{L"Begin processing", Step::Search},
        Beginning{L"Folder path is", Step::Installer}, Beginning{L"Deleting registry key", Step::Repairs},
        Beginning{L"State: Complete", Step::End},      Beginning{L"Starting OneNote", Step::StartOfOneNote},
        Beginning{L"Started OneNote", Step::Window},   Beginning{L"ERROR: Failed to start OneNote", Step::Window}};
    for (const Beginning& beginning : Beginnings) {
        if (entry.starts_with(beginning.entry))
            return beginning.step;
    }
    return before;
}

/// The log is written by an insertion a call.
void OnWrite(Registers& registers) {
    constexpr unsigned InsertionsBeforeText = 3;
    const auto* const text = registers.PointerAt<const wchar_t*>(0);
    if (registers.Parameter(1) != sizeof(wchar_t))
        return;
    ThreadState& thread = ThisThread();
    const std::wstring_view insertion(text, registers.Parameter(2));
    if (insertion == L"\r\n") {
        thread.insertions = 1;
        thread.length = 0;
        return;
    }
    if (++thread.insertions <= InsertionsBeforeText)
        return;
    thread.length += insertion.copy(thread.entry.data() + thread.length, thread.entry.size() - thread.length);
    thread.step = StepOf({thread.entry.data(), thread.length}, thread.step);
}

void OnFindResource(Registers& registers) {
    constexpr std::uint64_t Logo = 101;
    if (registers.Parameter(1) == Logo)
        ThisThread().step = Step::Window;
}

void OnQuestion(Registers& /*registers*/) {
    ThisThread().step = Step::Question;
}

void OnSleep(Registers& registers) {
    registers.rcx = registers.rcx < 1 ? registers.rcx : 1;
}

/// Waits of seconds become hundredths of it, but a program that was terminated gets its time to end.
void OnWait(Registers& registers) {
    constexpr DWORD Second = 1000;
    const auto milliseconds = static_cast<DWORD>(registers.rdx);
    if (milliseconds == INFINITE) {
        if (GetProcessId(registers.PointerAt<HANDLE>(0)) == 0 && GetCurrentThreadId() != TheExchange->mainThread)
            InterlockedIncrement(&TheExchange->waits);
    } else if (milliseconds >= Second && !OneNoteIsTerminated) {
        registers.rdx = milliseconds / 100;
    }
}

void OnTerminate(Registers& registers) {
    if (registers.PointerAt<HANDLE>(0) != GetCurrentProcess())
        OneNoteIsTerminated = true;
}

/// Whether the file has exactly the bytes of the embedded payload.
bool IsPayload(const wchar_t* path) {
    HMODULE const executable = GetModuleHandleW(nullptr);
    HRSRC const resource = FindResourceW(executable, MAKEINTRESOURCEW(200), L"FILE");
    const auto* const payload = static_cast<const char*>(LockResource(LoadResource(executable, resource)));
    const DWORD size = SizeofResource(executable, resource);
    const UniqueHandle file(CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, 0, nullptr));
    if (!KernelHandleTraits::IsOpen(file.Get()) || GetFileSize(file.Get(), nullptr) != size)
        return false;
    std::array<char, 0x4000> part{};
    for (DWORD done = 0; done < size;) {
        DWORD read = 0;
        if (!ReadFile(file.Get(), part.data(), part.size(), &read, nullptr) || read == 0 ||
            std::memcmp(part.data(), payload + done, read) != 0)
            return false;
        done += read;
    }
    return true;
}

void OnStart(Registers& registers) {
    InterlockedIncrement(&TheExchange->payloadStarts);
    if (!IsPayload(registers.PointerAt<const SHELLEXECUTEINFOW*>(0)->lpFile))
        InterlockedIncrement(&TheExchange->damagedPayloads);
}

using Observer = void (*)(Registers&);

struct Observed {
    std::string_view function;
    Observer observe;
};

/// These see also a call that fails then, the others none of those.
constexpr std::array Trackers{Observed{"fwrite", OnWrite}, Observed{"FindResourceW", OnFindResource},
                              Observed{"TaskDialogIndirect", OnQuestion}};
constexpr std::array Watchers{Observed{"Sleep", OnSleep}, Observed{"WaitForSingleObject", OnWait},
                              Observed{"TerminateProcess", OnTerminate}, Observed{"ShellExecuteExW", OnStart}};

template <std::size_t Size>
Observer ObserverOf(const std::array<Observed, Size>& list, std::string_view function) {
    for (const Observed& observed : list) {
        if (observed.function == function)
            return observed.observe;
    }
    return nullptr;
}

/// A function of the executable, however it came to it.
struct Import {
    const Function* function;
    std::uint32_t index;
    void* original;
    void* thunk;
    Observer track;
    Observer watch;
    volatile LONG calls;
};

constexpr std::size_t MaximumImports = 1024;
std::array<Import, MaximumImports> Imports;
std::size_t ImportCount = 0;
SRWLOCK ImportLock = SRWLOCK_INIT;
constexpr std::string_view LookUp = "GetProcAddress";

void ReportUnknown(const char* name) {
    auto& unknown = TheExchange->unknown;
    const std::string_view known(unknown.data());
    const std::string_view added(name);
    if (known.size() + added.size() + 2 > unknown.size() || known.find(added) != std::string_view::npos)
        return;
    added.copy(unknown.data() + known.size(), added.size());
    unknown.at(known.size() + added.size()) = ' ';
}

/// What the executable gets instead of that function: a thunk, or the function itself when it can't fail and nobody
/// wants to know of its calls.
void* Replacement(const char* name, void* original) {
    const Function* const function = FindFunction(name);
    if (function == nullptr) {
        ReportUnknown(name);
        return original;
    }
    const Observer track = ObserverOf(Trackers, name);
    const Observer watch = ObserverOf(Watchers, name);
    if (function->reason != nullptr && track == nullptr && watch == nullptr)
        return original;
    AcquireSRWLockExclusive(&ImportLock);
    std::size_t place = 0;
    while (place < ImportCount && Imports[place].function != function)
        ++place;
    Import& import = Imports[place];
    if (place == ImportCount) {
        ++ImportCount;
        import = {function, static_cast<std::uint32_t>(function - Functions().data()), original, nullptr, track, watch,
                  0};
        import.thunk = MakeThunk(&import);
    }
    ReleaseSRWLockExclusive(&ImportLock);
    return import.thunk;
}

/// A hash of the return addresses in the executable, from the caller outward.
std::uint32_t PlaceOf(Registers& registers) {
    auto* const executable = reinterpret_cast<char*>(GetModuleHandleW(nullptr));
    const DWORD size = HeadersOf(GetModuleHandleW(nullptr)).OptionalHeader.SizeOfImage;
    MEMORY_BASIC_INFORMATION stack{};
    VirtualQuery(&registers, &stack, sizeof stack);
    const DWORD64 stackEnd = reinterpret_cast<DWORD64>(stack.BaseAddress) + stack.RegionSize;
    CONTEXT context{};
    context.Rip = registers.returnAddress;
    context.Rsp = reinterpret_cast<DWORD64>(&registers.returnAddress + 1);
    context.Rbx = registers.rbx;
    context.Rbp = registers.rbp;
    context.Rsi = registers.rsi;
    context.Rdi = registers.rdi;
    context.R12 = registers.r12;
    context.R13 = registers.r13;
    context.R14 = registers.r14;
    context.R15 = registers.r15;
    std::uint32_t hash = 0x811C9DC5;
    constexpr int Deepest = 48;
    for (int depth = 0; depth < Deepest && context.Rip != 0; ++depth) {
        const DWORD64 offset = context.Rip - reinterpret_cast<DWORD64>(executable);
        if (offset < size)
            hash = (hash ^ static_cast<std::uint32_t>(offset)) * 0x01000193;
        if (context.Rsp < reinterpret_cast<DWORD64>(&registers) || context.Rsp + sizeof(DWORD64) >= stackEnd)
            break;
        DWORD64 base = 0;
        RUNTIME_FUNCTION* const function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        if (function == nullptr) {
            context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
            context.Rsp += sizeof(DWORD64);
            continue;
        }
        void* data = nullptr;
        DWORD64 frame = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &data, &frame, nullptr);
    }
    return hash;
}

void RecordCall(std::uint32_t function, Registers& registers) {
    const LONG place = InterlockedIncrement(&TheExchange->recorded) - 1;
    if (static_cast<std::size_t>(place) < TheExchange->calls.size())
        TheExchange->calls[static_cast<std::size_t>(place)] = {static_cast<std::uint16_t>(function), ThisThread().step,
                                                               PlaceOf(registers)};
}

/// Returns the last error that the caller sees.
DWORD Fail(const Way& way, Registers& registers, DWORD lastError) {
    TheExchange->stepOfFailure = ThisThread().step;
    InterlockedIncrement(&TheExchange->failed);
    if (way.cleared.bytes != 0)
        std::memset(registers.PointerAt<void*>(way.cleared.parameter), 0, way.cleared.bytes);
    registers.result = way.result;
    if (way.crtError != 0)
        errno = way.crtError;
    return way.error != 0 ? way.error : lastError;
}

/// For a function with no more than four parameters, none of them a floating-point number.
void CallThrough(void* original, const Registers& registers) {
    using Function4 = std::uint64_t (*)(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t);
    reinterpret_cast<Function4>(original)(registers.rcx, registers.rdx, registers.r8, registers.r9);
}

/// Whether the name is one, and no ordinal.
bool IsName(const char* name) {
    return !IS_INTRESOURCE(name);
}

void* LookUpReplacement(void* original, Registers& registers) {
    using GetProcAddressFunction = FARPROC(WINAPI*)(HMODULE, LPCSTR);
    const auto* const name = registers.PointerAt<const char*>(1);
    FARPROC const found = reinterpret_cast<GetProcAddressFunction>(original)(registers.PointerAt<HMODULE>(0), name);
    void* const function = reinterpret_cast<void*>(found);
    return function != nullptr && IsName(name) ? Replacement(name, function) : function;
}

void ReplaceImports() {
    HMODULE const executable = GetModuleHandleW(nullptr);
    for (const ImportedFunction& import : ImportsOf(executable)) {
        DWORD protection = 0;
        void* const replacement = Replacement(import.name, *import.slot);
        VirtualProtect(import.slot, sizeof *import.slot, PAGE_READWRITE, &protection);
        *import.slot = replacement;
        VirtualProtect(import.slot, sizeof *import.slot, protection, &protection);
    }
}

bool OpenExchange() {
    std::array<wchar_t, 64> name{};
    if (GetEnvironmentVariableW(ExchangeVariable, name.data(), static_cast<DWORD>(name.size())) == 0)
        return false;
    HANDLE const section = OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, name.data());
    TheExchange = static_cast<Exchange*>(MapViewOfFile(section, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Exchange)));
    return TheExchange != nullptr;
}

} // namespace

void* OnCall(void* context, Registers& registers) noexcept {
    Import& import = *static_cast<Import*>(context);
    const DWORD lastError = GetLastError();
    const auto call = static_cast<std::uint32_t>(InterlockedIncrement(&import.calls));
    if (import.track != nullptr)
        import.track(registers);
    if (TheExchange->function == NoFunction && import.function->reason == nullptr)
        RecordCall(import.index, registers);
    if (TheExchange->function == import.index && TheExchange->call == call) {
        const Way& way = import.function->ways.at(TheExchange->way);
        if (way.afterwards)
            CallThrough(import.original, registers);
        SetLastError(Fail(way, registers, lastError));
        return nullptr;
    }
    if (import.watch != nullptr)
        import.watch(registers);
    if (LookUp == import.function->name) {
        SetLastError(lastError);
        registers.result = reinterpret_cast<std::uint64_t>(LookUpReplacement(import.original, registers));
        return nullptr;
    }
    SetLastError(lastError);
    return import.original;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE library, DWORD reason, void* reserved);

BOOL WINAPI DllMain(HINSTANCE /*library*/, DWORD reason, void* /*reserved*/) {
    if (reason != DLL_PROCESS_ATTACH)
        return TRUE;
    if (!OpenExchange())
        return FALSE;
    ReplaceImports();
    return TRUE;
}
