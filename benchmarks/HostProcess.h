#pragma once

#include <map>
#include <string>

namespace vqrx::bench {

/// A process as the host's own /proc shows it: under Wine the times that Windows would tell of
/// another process are too coarse. Does nothing useful on Windows.
class HostProcess {
public:
    /// Looks for the one process whose command line begins with this text.
    explicit HostProcess(const std::string& commandLine);

    bool Found() const { return !folder_.empty(); }
    /// Processor time of each of its threads so far, nanoseconds.
    using ThreadTimes = std::map<std::string, double>;
    ThreadTimes CpuOfThreads() const;
    /// Seconds since then, without threads that have ended meanwhile.
    double CpuSecondsSince(const ThreadTimes& before) const;
    /// Resident memory, and the part of it that is its own, bytes.
    double ResidentBytes() const;
    double PrivateBytes() const;

private:
    double Kilobytes(const char* file, const char* field) const;

    std::string folder_;
};

} // namespace vqrx::bench
