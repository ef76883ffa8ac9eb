#pragma once

/// Creates `ContinueEvent` and `WorkerDoneEvent`, which live as long as the process, and runs `InstallationWorker` on a
/// thread of the pool. False when an event can't be created; then nothing runs. That the pool takes the work is not
/// checked; if it did not, `StopWorkerThread` would not return. Main thread, once `MainWindow` exists.
bool StartWorkerThread();

/// Tells the worker to end and waits for it without a limit, for as long as a pass takes that is under way. Main
/// thread, after a `StartWorkerThread` that was true.
void StopWorkerThread();
