#include "app/WorkerThread.h"

#include "core/Unique.h"
#include "install/WorkerSignals.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/LogText.h"
#include "tests/support/Watchdog.h"

#include <atomic>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

/// Records what is queued for the pool, and queues nothing. Its failure is one that nobody checks.
class WorkerThread : public testing::Test {
protected:
    struct Work {
        LPTHREAD_START_ROUTINE function;
        void* context;
        ULONG flags;
    };

    void SetUp() override {
        Queued.clear();
        ExitRequested = false;
    }
    void TearDown() override {
        for (HANDLE* const event : {&ContinueEvent, &WorkerDoneEvent}) {
            if (*event != nullptr)
                CloseHandle(*event);
            *event = nullptr;
        }
        ExitRequested = false;
    }

    static bool IsSignalled(HANDLE event) { return WaitForSingleObject(event, 0) == WAIT_OBJECT_0; }

    static inline std::vector<Work> Queued;

private:
    ImportPatch<decltype(QueueUserWorkItem)> queue_{
        "QueueUserWorkItem", [](LPTHREAD_START_ROUTINE function, PVOID context, ULONG flags) -> BOOL {
            Queued.push_back({function, context, flags});
            return FALSE;
        }};
};

/// Whether the first event and the second one can be created.
struct Creation {
    const char* name;
    bool first;
    bool second;
};

class FailedEvents : public WorkerThread, public testing::WithParamInterface<Creation> {};

} // namespace

TEST_F(WorkerThread, IsQueuedOnceWithoutAContextAndWithDefaultFlags) {
    EXPECT_TRUE(StartWorkerThread()) << "though it could not be queued";
    ASSERT_EQ(Queued.size(), 1U);
    EXPECT_EQ(Queued[0].context, nullptr);
    EXPECT_EQ(Queued[0].flags, 0U);
}

// Its first call is one of COM. What this throws there is nothing that it catches.
TEST_F(WorkerThread, IsTheInstallationWorkerWithoutBoxesOfCriticalErrors) {
    static DWORD mode;
    mode = 0;
    const ImportPatch<decltype(CoInitialize)> initialise("CoInitialize", [](LPVOID) -> HRESULT {
        mode = GetThreadErrorMode();
        throw std::logic_error("the worker has begun");
    });
    const LoggedEntries entries;
    ASSERT_TRUE(StartWorkerThread());
    std::thread([] { EXPECT_THROW(Queued.at(0).function(nullptr), std::logic_error); }).join();
    EXPECT_EQ(mode, static_cast<DWORD>(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX));
    EXPECT_EQ(entries.Get(), Entries{L"Begin processing"});
}

TEST_F(WorkerThread, HasTwoEventsThatAreUnsignalledAndResetThemselves) {
    ASSERT_TRUE(StartWorkerThread());
    for (const HANDLE event : {ContinueEvent, WorkerDoneEvent}) {
        EXPECT_FALSE(IsSignalled(event));
        SetEvent(event);
        EXPECT_NE(IsSignalled(ContinueEvent), IsSignalled(WorkerDoneEvent));
        EXPECT_FALSE(IsSignalled(event));
    }
}

TEST_F(WorkerThread, HasEventsWithoutNamesThatNoChildInherits) {
    static int created;
    created = 0;
    static auto* const Create = ImportedNow<decltype(CreateEventW)>("CreateEventW");
    const ImportPatch<decltype(CreateEventW)> create(
        "CreateEventW", [](LPSECURITY_ATTRIBUTES attributes, BOOL manual, BOOL signalled, LPCWSTR name) -> HANDLE {
            EXPECT_EQ(attributes, nullptr);
            EXPECT_EQ(name, nullptr);
            ++created;
            return Create(attributes, manual, signalled, name);
        });
    EXPECT_TRUE(StartWorkerThread());
    EXPECT_EQ(created, 2);
}

INSTANTIATE_TEST_SUITE_P(, FailedEvents,
                         testing::Values(Creation{"First", false, true}, Creation{"Second", true, false},
                                         Creation{"Both", false, false}),
                         [](const auto& item) { return item.param.name; });

TEST_P(FailedEvents, LetNothingRun) {
    static std::vector<bool> successes;
    static auto* const Create = ImportedNow<decltype(CreateEventW)>("CreateEventW");
    successes = {GetParam().second, GetParam().first}; // the next one last
    const ImportPatch<decltype(CreateEventW)> create(
        "CreateEventW", [](LPSECURITY_ATTRIBUTES attributes, BOOL manual, BOOL signalled, LPCWSTR name) -> HANDLE {
            const bool success = successes.back();
            successes.pop_back();
            return success ? Create(attributes, manual, signalled, name) : nullptr;
        });
    EXPECT_FALSE(StartWorkerThread());
    EXPECT_TRUE(Queued.empty());
}

TEST_F(WorkerThread, IsToldToEndBeforeItIsWokenAndThenAwaitedWithoutALimit) {
    struct Calls {
        bool toldAtSignal = false;
        std::vector<HANDLE> signalled;
        std::vector<HANDLE> awaited;
        DWORD milliseconds = 0;
    };
    static Calls calls;
    calls = {};
    ASSERT_TRUE(StartWorkerThread());
    {
        const ImportPatch<decltype(SetEvent)> set("SetEvent", [](HANDLE event) -> BOOL {
            calls.toldAtSignal = ExitRequested && calls.awaited.empty();
            calls.signalled.push_back(event);
            return FALSE; // which nobody checks
        });
        const ImportPatch<decltype(WaitForSingleObject)> wait("WaitForSingleObject",
                                                              [](HANDLE event, DWORD milliseconds) -> DWORD {
                                                                  calls.awaited.push_back(event);
                                                                  calls.milliseconds = milliseconds;
                                                                  return WAIT_FAILED; // nor this
                                                              });
        StopWorkerThread();
    }
    EXPECT_TRUE(calls.toldAtSignal);
    EXPECT_EQ(calls.signalled, std::vector<HANDLE>{ContinueEvent});
    EXPECT_EQ(calls.awaited, std::vector<HANDLE>{WorkerDoneEvent});
    EXPECT_EQ(calls.milliseconds, INFINITE);
}

TEST_F(WorkerThread, HasEndedWhenItIsStopped) {
    static std::atomic<bool> ended;
    ended = false;
    ASSERT_TRUE(StartWorkerThread());
    const UniqueHandle worker{CreateThread(
        nullptr, 0,
        [](void*) -> DWORD {
            WaitForSingleObject(ContinueEvent, INFINITE);
            Sleep(50); // what is left of a pass
            ended = ExitRequested.load();
            SetEvent(WorkerDoneEvent);
            return 0;
        },
        nullptr, 0, nullptr)};
    const Watchdog::Waiting waiting("the worker's end");
    StopWorkerThread();
    EXPECT_TRUE(ended);
}
