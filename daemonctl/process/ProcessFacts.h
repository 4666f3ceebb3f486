#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What Windows tells about a process id at this moment.
struct ProcessFacts {
    enum class State {
        running,
        gone,   ///< no process has this id, or it has ended
        hidden, ///< there is one, but this user may not ask about it
    };
    std::uint32_t processId = 0;
    State state = State::gone;
    std::string image;             ///< full path, UTF-8
    std::int64_t createdMs = 0;    ///< milliseconds since 1970, UTC
    std::int64_t cpuMs = 0;        ///< user and kernel time used so far
    std::uint64_t memoryBytes = 0; ///< working set
};

/// Asks Windows. Never throws but for lack of memory.
ProcessFacts ReadProcessFacts(std::uint32_t processId);

/// The arguments that a process was started with, its program's name left out; empty when they
/// cannot be had.
std::vector<std::string> ArgumentsOfProcess(std::uint32_t processId);

/// Whether two paths lead to one file: by way of a junction, a drive letter that stands for a
/// folder, an 8.3 name.
bool IsSameFile(const std::string& left, const std::string& right);

/// The program file of a Windows service, as its configuration has it: a command line in UTF-8,
/// empty for an unknown service.
std::string CommandOfService(const std::string& name);

} // namespace vqrx::client::v0
