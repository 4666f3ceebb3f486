#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::test {

/// The handles of one process, from the system's table of all handles.
struct HandleCounts {
    long long process = 0; ///< handles of processes
    long long other = 0;
};
/// @throws std::runtime_error when the system does not tell
HandleCounts CountHandles(DWORD ownerId);

/// What the supervisor used at one moment.
struct Sample {
    double seconds = 0; ///< since the load began
    double privateMiB = 0;
    double workingMiB = 0;
    HandleCounts handles;
    long long expectedProcessHandles = 0; ///< by the log
    unsigned threads = 0;
    double cpuSeconds = 0;
    std::size_t restarts = 0;
    std::size_t records = 0;
};

/// Measures one process.
class Sampler {
public:
    explicit Sampler(DWORD processId);
    /// Memory, threads, processor time and handles; the rest is the caller's.
    Sample Take() const;

private:
    DWORD processId_;
    system::win32::v1::UniqueKernelHandle process_;
};

void WriteCsv(const std::string& path, const std::vector<Sample>& samples);

} // namespace vqrx::test
