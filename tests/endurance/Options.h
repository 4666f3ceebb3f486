#pragma once

#include <string>

namespace vqrx::test {

/// How long, how many, and where the figures go.
struct EnduranceOptions {
    unsigned seconds = 60;            ///< of load, once all daemons run
    unsigned daemons = 200;           ///< without those of the clients
    std::string output = "endurance"; ///< folder for samples.csv, samples.svg, report.txt
};

/// --duration 90s|20m|4h, --daemons N, --output FOLDER.
/// @throws std::invalid_argument
EnduranceOptions ReadOptions(int argc, char** argv);

} // namespace vqrx::test
