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

/// Returns a handle for each process that the product has started in this run. The handles are
/// valid until the next run begins.
[[nodiscard]] std::vector<HANDLE> StartedProcesses();

/// Waits until all threads that the product has started in this run have ended.
void WaitForStartedThreads();
/// Reports whether all threads that the product has started in this run have ended.
[[nodiscard]] bool AllThreadsHaveEnded();

} // namespace vqrx::test::anomaly
