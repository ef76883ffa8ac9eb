#pragma once

/// Creates `ContinueEvent` and `WorkerDoneEvent` and runs `InstallationWorker` on a thread of the pool. False when an
/// event can't be created; then nothing runs. Main thread, once `MainWindow` exists.
bool StartWorkerThread();

/// Tells the worker to end and waits for it without a limit, for as long as a pass takes that is under way.
void StopWorkerThread();
