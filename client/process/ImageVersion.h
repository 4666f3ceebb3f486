#pragma once

#include "doctor/DoctorFacts.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// "1.2.3" from a file's version resource; empty when it has none.
std::string VersionOfImage(const std::wstring& path);

/// The processes that run a file of this name (ASCII, letter case ignored).
std::vector<ImageFacts> ProcessesOfImage(const std::wstring& fileName);

} // namespace vqrx::client::v0
