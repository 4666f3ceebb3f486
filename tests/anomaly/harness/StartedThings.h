#pragma once

#include <windows.h>

#include <vector>

namespace vqrx::test::anomaly {

/// Notes a process that the product has started. Any thread; allocates nothing.
void NoteStartedProcess(HANDLE process) noexcept;
/// Notes a thread that the product has started. Any thread; allocates nothing.
void NoteStartedThread(HANDLE thread) noexcept;
/// Forgets all processes and threads, and closes the handles to them.
void ForgetStarted() noexcept;

/// Returns a handle for each process that the product has started in this run and that still runs.
/// The handles are valid until the next run begins.
[[nodiscard]] std::vector<HANDLE> RunningProcesses();
/// Waits until a process that the product has started is noted and runs. A process may run before
/// it is noted: the thread that starts it notes it when CreateProcess has returned.
/// @return false if that takes longer
[[nodiscard]] bool WaitForRunningProcess(DWORD milliseconds);

/// Waits until all threads that the product has started in this run have ended.
void WaitForStartedThreads();
/// Reports whether all threads that the product has started in this run have ended.
[[nodiscard]] bool AllThreadsHaveEnded();

} // namespace vqrx::test::anomaly
