#pragma once

#include <string>

namespace vqrx::test {

/// Options of a run.
struct EnduranceOptions {
    unsigned seconds = 60;            ///< duration of the load, which begins when all daemons run
    unsigned daemons = 200;           ///< without the daemons of the clients
    std::string output = "endurance"; ///< folder for samples.csv, samples.svg, report.txt
};

/// Reads --duration 90s|20m|4h, --daemons N and --output FOLDER.
/// @throws std::invalid_argument  for an unknown option, a missing value or a wrong duration
[[nodiscard]] EnduranceOptions ReadOptions(int argc, char** argv);

} // namespace vqrx::test
