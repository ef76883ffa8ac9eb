#include "app/WorkerThread.h"

#include "install/InstallationWorker.h"
#include "install/WorkerSignals.h"

bool StartWorkerThread() {
    ContinueEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    WorkerDoneEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (ContinueEvent == nullptr || WorkerDoneEvent == nullptr)
        return false;
    // Not checked: there is nothing to be done about it. Without a worker the window stays as it is, and the process
    // after it.
    QueueUserWorkItem(InstallationWorker, nullptr, WT_EXECUTEDEFAULT);
    return true;
}

void StopWorkerThread() {
    ExitRequested = true;
    SetEvent(ContinueEvent);
    WaitForSingleObject(WorkerDoneEvent, INFINITE);
}
