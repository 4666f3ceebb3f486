#pragma once

#include "Scenario.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::test::anomaly {

/// How to run a scenario.
struct CampaignOptions {
    bool everything = false;          ///< each call; otherwise a sample of a few seconds
    std::uint32_t deadlineMs = 60000; ///< of one run
    std::uint32_t callsOfPath = 5;    ///< see ExpectThatEachCallMayFail
};

/// What the runs of a scenario showed.
struct CampaignReport {
    std::vector<std::string> findings; ///< broken promises, each with the call that failed
    std::size_t calls = 0;             ///< that the scenario makes
    std::size_t paths = 0;             ///< on which they lie
    std::size_t tried = 0;             ///< calls that had a run
    std::size_t missed = 0;            ///< runs that did not come to their call
    std::uint32_t seed = 0;            ///< of the sample
};

/// Runs a scenario for the calling test: see ExpectThatEachCallMayFail.
/// @return empty in the process of the runs, which then only has to end
[[nodiscard]] std::optional<CampaignReport> TryEachCall(const MakeScenario& make,
                                                        const CampaignOptions& options);

} // namespace vqrx::test::anomaly
