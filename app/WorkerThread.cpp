#include "app/WorkerThread.h"

#include "app/ErrorMode.h"
#include "install/InstallationWorker.h"
#include "install/WorkerSignals.h"

namespace {

DWORD WINAPI RunWorker(void* context) {
    SuppressCriticalErrorBoxes();
    return InstallationWorker(context);
}

} // namespace

bool StartWorkerThread() {
    ContinueEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    WorkerDoneEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (ContinueEvent == nullptr || WorkerDoneEvent == nullptr)
        return false;
    // Not checked, since nothing could take the worker's place: the window then stays as it is, and the process stays
    // when the window is closed.
    QueueUserWorkItem(RunWorker, nullptr, WT_EXECUTEDEFAULT);
    return true;
}

void StopWorkerThread() {
    ExitRequested = true;
    SetEvent(ContinueEvent);
    WaitForSingleObject(WorkerDoneEvent, INFINITE);
}
