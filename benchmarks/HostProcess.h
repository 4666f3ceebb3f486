#pragma once

#include <map>
#include <string>

namespace vqrx::bench {

/// Times and memory of a process, read from /proc of the host. The times that Wine reports for
/// another process are too coarse. On Windows no process is found.
class HostProcess {
public:
    /// Finds the process whose command line begins with this text.
    explicit HostProcess(const std::string& commandLine);

    [[nodiscard]] bool Found() const { return !folder_.empty(); }
    /// Processor time by thread, nanoseconds.
    using ThreadTimes = std::map<std::string, double>;
    /// Returns the processor time that each running thread has used.
    [[nodiscard]] ThreadTimes CpuOfThreads() const;
    /// Returns the processor time since the earlier call, seconds, without threads that have ended.
    [[nodiscard]] double CpuSecondsSince(const ThreadTimes& before) const;
    /// Returns the resident memory, bytes.
    [[nodiscard]] double ResidentBytes() const;
    /// Returns the resident memory that no other process shares, bytes.
    [[nodiscard]] double PrivateBytes() const;

private:
    double Kilobytes(const char* file, const char* field) const;

    std::string folder_;
};

} // namespace vqrx::bench
