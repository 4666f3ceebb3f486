#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// What a program answered.
struct ProgramAnswer {
    std::uint32_t exitCode = 0;
    std::string output; ///< standard output and standard error together
};

/// Runs a console program without a window and waits for its end. It works in the system folder,
/// and inherits no handle but its output.
/// @param program  full path, UTF-8
/// @throws SetupError if it cannot be started
[[nodiscard]] ProgramAnswer RunHidden(const std::string& program,
                                      const std::vector<std::string>& arguments);

} // namespace vqrx::setup::v0
