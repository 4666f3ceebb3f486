#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// The file of a program or of a library, and the process that runs the program.
struct ImageFacts {
    std::uint32_t processId = 0; ///< 0 for a library
    std::string path;            ///< UTF-8
    std::string version;         ///< of the file's version resource; empty: the file has none
};

/// "1.2.3" from a file's version resource; empty when it has none.
std::string VersionOfImage(const std::wstring& path);

/// The processes that run a file of this name (ASCII, letter case ignored).
std::vector<ImageFacts> ProcessesOfImage(const std::wstring& fileName);

/// The ids of the processes that this one has started and that may still run.
std::vector<std::uint32_t> ChildrenOfProcess(std::uint32_t processId);

} // namespace vqrx::client::v0
