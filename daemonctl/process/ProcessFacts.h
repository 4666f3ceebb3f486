#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A process id, and the process that has this id at one moment.
struct ProcessFacts {
    enum class State {
        kRunning,
        kGone,   ///< no process has this id, or the process has ended
        kHidden, ///< a process has this id, but Windows refuses to open it for this user
    };
    std::uint32_t processId = 0;
    State state = State::kGone;
    // The next four members are set only for a running process.
    std::string image;             ///< full path of the program file, UTF-8; empty if not known
    std::int64_t createdMs = 0;    ///< start of the process, milliseconds since 1970, UTC
    std::int64_t cpuMs = 0;        ///< processor time used so far, user and kernel, milliseconds
    std::uint64_t memoryBytes = 0; ///< working set
    /// When the process ended, milliseconds since 1970, UTC. Set only for a process that has ended
    /// and that a program, for example its supervisor, still holds open.
    std::optional<std::int64_t> endedMs = {};
};

/// Reads the facts about a process from Windows.
/// @throws std::bad_alloc; CodePageError if the path cannot be converted to UTF-8
[[nodiscard]] ProcessFacts ReadProcessFacts(std::uint32_t processId);

/// Returns what ReadArguments() reads; no arguments if they cannot be read.
[[nodiscard]] std::vector<std::string> ArgumentsOfProcess(std::uint32_t processId);

/// Reads the arguments of a running process, UTF-8, without the name of its program.
/// @return nothing if they cannot be read, for example because this user may not
[[nodiscard]] std::optional<std::vector<std::string>> ReadArguments(std::uint32_t processId);

/// Returns whether two paths (UTF-8) lead to one file. Two different texts do so through a
/// junction, a drive letter that stands for a folder, or an 8.3 name.
/// @return false also if one of the files cannot be opened
[[nodiscard]] bool IsSameFile(const std::string& left, const std::string& right);

/// Returns the command line that starts a Windows service, UTF-8, as its configuration has it.
/// @return empty if no service has this name, or if its configuration cannot be read
[[nodiscard]] std::string CommandOfService(const std::string& name);

} // namespace vqrx::client::v0
