#include "app/WorkerThread.h"

#include "install/InstallationWorker.h"
#include "install/WorkerSignals.h"

bool StartWorkerThread() {
    ContinueEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    WorkerDoneEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (ContinueEvent == nullptr || WorkerDoneEvent == nullptr)
        return false;
    // Not checked: without a worker the window stays as it is, and the process stays after the window is closed.
    QueueUserWorkItem(InstallationWorker, nullptr, WT_EXECUTEDEFAULT);
    return true;
}

void StopWorkerThread() {
    ExitRequested = true;
    SetEvent(ContinueEvent);
    WaitForSingleObject(WorkerDoneEvent, INFINITE);
}
