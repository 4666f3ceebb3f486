#pragma once

#include "Scenario.h"

#include <cstdint>
#include <string>

namespace vqrx::test::anomaly {

/// What the process of the runs has to do. It gets this in environment variables.
struct Work {
    std::string folder;            ///< for the files below; empty in the process that reports
    std::uint32_t seed = 0;        ///< decides the order of the calls
    std::uint32_t seconds = 0;     ///< after this time no further run begins; 0: no limit
    std::uint32_t deadlineMs = 0;  ///< of one run
    std::uint32_t callsOfPath = 0; ///< of a path at most so many first calls
    std::size_t first = 0;         ///< number of the call to begin with
    CallPoint only;                ///< if its path is not 0: the only call to try

    [[nodiscard]] std::string CallFile() const { return folder + "\\calls.txt"; }
    [[nodiscard]] std::string ResultFile() const { return folder + "\\results.txt"; }
    [[nodiscard]] std::string OutputFile() const { return folder + "\\output.txt"; }

    /// Reads the environment variables.
    [[nodiscard]] static Work FromEnvironment();
    /// Sets the environment variables for a process that is started next.
    void Set() const;
    /// Removes the variables that mark the process of the runs.
    static void Unset();
};

/// Runs a scenario undisturbed, then once for each call that fails, and appends to the file of
/// results, each line with tabs in place of line ends:
///   run NUMBER       a run begins
///   ok               it broke no promise
///   missed           it did not come to the call
///   broken TEXT      it broke a promise
///   died TEXT        this process ends now
///   end COUNT        all is done; the number of calls in the scenario
void DoWork(const Work& work, const MakeScenario& make);

} // namespace vqrx::test::anomaly
