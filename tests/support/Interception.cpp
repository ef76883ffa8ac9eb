#include "tests/support/Interception.h"

#include "core/Unique.h"
#include "tests/support/ImportTable.h"
#include "tests/support/Program.h"
#include "tests/support/Watchdog.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace {

/// Where no code ever is: the slots of intercepted functions lead there.
constexpr ULONG_PTR NoCode = 0x1000;

/// Of the thread's environment block.
constexpr ULONG_PTR LastErrorOffset = 0x68;

bool LastWasIntercepted = false;

struct InterceptedImport {
    ULONG_PTR slotOffset = 0;
    ULONG_PTR function = 0;
    const Interception* interception = nullptr;
};

std::vector<InterceptedImport> FindImports(const std::filesystem::path& file, const Interceptions& interceptions) {
    const HMODULE module = LoadLibraryExW(file.c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES);
    EXPECT_NE(module, nullptr) << "error " << GetLastError();
    std::vector<InterceptedImport> imports;
    for (const ImportedFunction& function : ImportsOf(module)) {
        const auto named = interceptions.find(function.name);
        if (named != interceptions.end())
            imports.push_back(
                {reinterpret_cast<ULONG_PTR>(function.slot) - reinterpret_cast<ULONG_PTR>(module), 0, &named->second});
    }
    FreeLibrary(module);
    EXPECT_EQ(imports.size(), interceptions.size()) << "the program does not import them all";
    return imports;
}

struct Thread {
    HANDLE handle = nullptr;
    ULONG_PTR environmentBlock = 0;
};

class Debugger {
public:
    explicit Debugger(std::vector<InterceptedImport> imports) : imports_(std::move(imports)) {}

    /// To its end, or to the last call that is intercepted.
    void Debug() {
        const Watchdog::Waiting waiting("the end of a program whose calls are intercepted");
        DEBUG_EVENT event{};
        while (WaitForDebugEvent(&event, INFINITE)) {
            const DWORD status = Handle(event);
            if (std::exchange(LastWasIntercepted, false)) {
                LetGo(event);
                return;
            }
            ContinueDebugEvent(event.dwProcessId, event.dwThreadId, status);
            if (event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT)
                return;
        }
        ADD_FAILURE() << "the program can't be debugged, error " << GetLastError();
    }

private:
    /// The thread stands still until nobody debugs it: it would throw before.
    static void LetGo(const DEBUG_EVENT& event) {
        const UniqueHandle thread(OpenThread(THREAD_SUSPEND_RESUME, FALSE, event.dwThreadId));
        EXPECT_NE(SuspendThread(thread.Get()), static_cast<DWORD>(-1));
        ContinueDebugEvent(event.dwProcessId, event.dwThreadId, DBG_CONTINUE);
        EXPECT_TRUE(DebugActiveProcessStop(event.dwProcessId));
        EXPECT_NE(ResumeThread(thread.Get()), static_cast<DWORD>(-1));
    }

    DWORD Handle(const DEBUG_EVENT& event) {
        switch (event.dwDebugEventCode) {
        case CREATE_PROCESS_DEBUG_EVENT:
            process_ = event.u.CreateProcessInfo.hProcess;
            base_ = reinterpret_cast<ULONG_PTR>(event.u.CreateProcessInfo.lpBaseOfImage);
            threads_[event.dwThreadId] = {event.u.CreateProcessInfo.hThread,
                                          reinterpret_cast<ULONG_PTR>(event.u.CreateProcessInfo.lpThreadLocalBase)};
            CloseHandle(event.u.CreateProcessInfo.hFile);
            break;
        case CREATE_THREAD_DEBUG_EVENT:
            threads_[event.dwThreadId] = {event.u.CreateThread.hThread,
                                          reinterpret_cast<ULONG_PTR>(event.u.CreateThread.lpThreadLocalBase)};
            break;
        case LOAD_DLL_DEBUG_EVENT:
            CloseHandle(event.u.LoadDll.hFile);
            break;
        case EXCEPTION_DEBUG_EVENT:
            return HandleException(event);
        default:
            break;
        }
        return DBG_CONTINUE;
    }

    DWORD HandleException(const DEBUG_EVENT& event) {
        const EXCEPTION_RECORD& exception = event.u.Exception.ExceptionRecord;
        if (exception.ExceptionCode == EXCEPTION_BREAKPOINT && !started_) {
            started_ = true; // all libraries are loaded, and the slots are filled
            for (std::size_t number = 0; number < imports_.size(); ++number)
                imports_[number].function = ReplaceSlot(imports_[number], NoCode + number);
            return DBG_CONTINUE;
        }
        const ULONG_PTR number = reinterpret_cast<ULONG_PTR>(exception.ExceptionAddress) - NoCode;
        if (exception.ExceptionCode != EXCEPTION_ACCESS_VIOLATION || number >= imports_.size())
            return DBG_EXCEPTION_NOT_HANDLED;
        Intercept(imports_[number], threads_[event.dwThreadId]);
        return DBG_CONTINUE;
    }

    /// Returns what the slot held.
    ULONG_PTR ReplaceSlot(const InterceptedImport& import, ULONG_PTR function) const {
        const ULONG_PTR slot = base_ + import.slotOffset;
        DWORD protection = 0;
        VirtualProtectEx(process_, reinterpret_cast<void*>(slot), sizeof slot, PAGE_READWRITE, &protection);
        const ULONG_PTR before = Read(slot);
        Write(slot, function);
        VirtualProtectEx(process_, reinterpret_cast<void*>(slot), sizeof slot, protection, &protection);
        return before;
    }

    void Intercept(const InterceptedImport& import, const Thread& thread) {
        CONTEXT context{};
        context.ContextFlags = CONTEXT_FULL;
        EXPECT_TRUE(GetThreadContext(thread.handle, &context));
        context.Rip = import.function;
        if (const auto answer = (*import.interception)({context.Rcx, context.Rdx, context.R8, context.R9})) {
            context.Rip = Read(context.Rsp);
            context.Rsp += sizeof context.Rip;
            context.Rax = answer->value;
            Write(thread.environmentBlock + LastErrorOffset, answer->error);
        }
        EXPECT_TRUE(SetThreadContext(thread.handle, &context));
        if (LastWasIntercepted) {
            for (const InterceptedImport& each : imports_)
                ReplaceSlot(each, each.function);
        }
    }

    ULONG_PTR Read(ULONG_PTR address) const {
        ULONG_PTR value = 0;
        EXPECT_TRUE(ReadProcessMemory(process_, reinterpret_cast<void*>(address), &value, sizeof value, nullptr));
        return value;
    }

    template <typename Value>
    void Write(ULONG_PTR address, Value value) const {
        EXPECT_TRUE(WriteProcessMemory(process_, reinterpret_cast<void*>(address), &value, sizeof value, nullptr));
    }

    std::vector<InterceptedImport> imports_;
    HANDLE process_ = nullptr; // it and those of the threads belong to the system
    ULONG_PTR base_ = 0;
    std::map<DWORD, Thread> threads_;
    bool started_ = false;
};

} // namespace

void InterceptNoMore() {
    LastWasIntercepted = true;
}

DWORD RunIntercepted(const std::filesystem::path& file, const std::wstring& arguments,
                     const std::filesystem::path& temporaryFolder, const Interceptions& interceptions) {
    Debugger debugger(FindImports(file, interceptions));
    const Program program(file, arguments, temporaryFolder, {}, DEBUG_ONLY_THIS_PROCESS);
    debugger.Debug();
    return program.ExitCode();
}
