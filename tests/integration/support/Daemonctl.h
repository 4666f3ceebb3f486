#pragma once

#include <windows.h>

#include <nlohmann/json.hpp>

#include <ostream>
#include <string>

namespace vqrx::test {

/// Exit code and output of daemonctl.
struct Answer {
    DWORD exitCode;
    std::string output;
    std::string error;

    bool operator==(const Answer&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Answer& answer);

/// Runs daemonctl.exe and waits for its end.
/// @param arguments  as on a command line, UTF-8
[[nodiscard]] Answer Daemonctl(const std::string& arguments);

/// Returns the daemons that "daemonctl ps --json" shows.
/// @throws std::runtime_error  with the answer, if the command does not show them
[[nodiscard]] nlohmann::json ListedDaemons();

} // namespace vqrx::test
