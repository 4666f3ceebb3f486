#pragma once

#include "doctor/DoctorFacts.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// "1.2.3" from a file's version resource; empty when it has none.
std::string VersionOfImage(const std::wstring& path);

/// The processes that run a file of this name (ASCII, letter case ignored).
std::vector<ImageFacts> ProcessesOfImage(const std::wstring& fileName);

/// The ids of the processes that this one has started and that may still run.
std::vector<std::uint32_t> ChildrenOfProcess(std::uint32_t processId);

} // namespace vqrx::client::v0
