#pragma once

#include "ProcessFacts.h"

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Windows did not give the list of processes. Nothing is known about what runs.
class ProcessListUnreadable : public std::runtime_error {
public:
    /// @param error  Windows error
    explicit ProcessListUnreadable(std::uint32_t error);
};

/// The file of a program or of a library.
struct ImageFacts {
    std::uint32_t processId = 0; ///< the process that runs the program; 0 for a library
    std::string path;            ///< UTF-8; empty if not known
    std::string version;         ///< "1.2.3"; empty if the file has no version resource
};

/// Returns the product version in the version resource of a file, such as "1.2.3".
/// @return empty if the file has no version resource
[[nodiscard]] std::string VersionOfImage(const std::wstring& path);

/// Returns whether any process runs a program file of this name, whoever has started it. Looks at
/// nothing but the list of processes.
/// @param fileName  without folder; letter case is ignored
/// @throws ProcessListUnreadable
[[nodiscard]] bool IsImageRunning(const std::wstring& fileName);

/// Finds the processes that run a program file of this name.
/// @param fileName  without folder; letter case is ignored
/// @throws ProcessListUnreadable; std::bad_alloc; CodePageError if a path cannot be converted to
///         UTF-8
[[nodiscard]] std::vector<ImageFacts> ProcessesOfImage(const std::wstring& fileName);

/// Returns the ids of the processes whose parent has the given id. Windows gives ids again: a
/// process that is older than this parent was started by an earlier process with the same id.
/// @throws ProcessListUnreadable; std::bad_alloc
[[nodiscard]] std::vector<std::uint32_t> ChildrenOfProcess(std::uint32_t processId);

/// Returns the id of the process that has started a process, which may have ended since.
/// @return nothing if no process has this id
/// @throws ProcessListUnreadable
[[nodiscard]] std::optional<std::uint32_t> ParentOfProcess(std::uint32_t processId);

/// Returns the running processes whose parent has the given id, except console hosts and processes
/// that this user may not open; see ChildrenOfProcess().
/// @throws ProcessListUnreadable; as ReadProcessFacts()
[[nodiscard]] std::vector<ProcessFacts> RunningChildren(std::uint32_t parentId);

/// Returns the ids of the processes that run a program file of this name, and whose parent has
/// ended.
/// @param fileName  without folder; letter case is ignored
/// @throws ProcessListUnreadable; as ReadProcessFacts()
[[nodiscard]] std::vector<std::uint32_t> OrphansOfImage(const std::wstring& fileName);

} // namespace vqrx::client::v0
