#pragma once

/// Creates `ContinueEvent` and `WorkerDoneEvent`, which live as long as the process, and runs `InstallationWorker` on a
/// thread of the pool. False when an event can't be created; then nothing runs. That the pool takes the work is not
/// checked; if it did not, `StopWorkerThread` would not return. Main thread, once `MainWindow` exists.
bool StartWorkerThread();

/// Tells the worker to end and waits for it without a limit: a pass that is under way goes on to its end. Main thread,
/// after `StartWorkerThread` has returned true.
void StopWorkerThread();
