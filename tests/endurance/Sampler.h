#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::test {

/// Number of open handles of one process.
struct HandleCounts {
    long long process = 0; ///< handles of processes
    long long other = 0;
};
/// @throws std::runtime_error  if the system refuses to list its handles
[[nodiscard]] HandleCounts CountHandles(DWORD ownerId);

/// Resources of the supervisor, and counts of its log, at one moment.
struct Sample {
    double seconds = 0; ///< from the beginning of the load
    double privateMiB = 0;
    double workingMiB = 0;
    HandleCounts handles;
    long long expectedProcessHandles = 0; ///< explained by the log
    unsigned threads = 0;
    double cpuSeconds = 0;
    std::size_t restarts = 0;
    std::size_t records = 0;
};

/// Measures the resources of one process.
class Sampler {
public:
    explicit Sampler(DWORD processId);
    /// Measures memory, threads, processor time and handles. The caller sets the other members.
    [[nodiscard]] Sample Take() const;

private:
    DWORD processId_;
    system::win32::v1::UniqueKernelHandle process_;
};

/// Writes the samples to a file, one line for each.
void WriteCsv(const std::string& path, const std::vector<Sample>& samples);

} // namespace vqrx::test
