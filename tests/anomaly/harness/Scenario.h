#pragma once

#include "Injection.h"
#include "RunNotes.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vqrx::test::anomaly {

/// A piece of the product's work that is run again and again, each time with another call that
/// fails. A scenario is made for one run. Its own work belongs to the test: it marks each call of
/// the product with OfTheProduct. The threads that the product makes belong to the product without
/// a mark.
///
/// It notes in RunNotes what a client or an operator sees, and what is wrong. A request may fail:
/// what follows from that is for the scenario to decide.
class Scenario {
public:
    Scenario() = default;
    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;
    virtual ~Scenario() = default;

    /// The steps. One of their calls may fail.
    virtual void Run() = 0;
    /// Requests that must work whatever failed before. No call fails.
    virtual void Verify() = 0;
    /// Ends and destroys what Run made. One of its calls may fail, unless one failed in Run.
    virtual void Finish() = 0;
};

using MakeScenario = std::function<std::unique_ptr<Scenario>(RunNotes&)>;

/// Runs a scenario once for each call that it makes, or for a sample of them, and adds a failure to
/// the calling test for each promise that the failed call breaks (see docs/dev/testing.md). The
/// runs are in a process of their own, which calls this function, too: it is this test program,
/// started with only the calling test.
/// @param make         makes the scenario. It is called in the process of the runs only
/// @param callsOfPath  of a path that a run takes more often, only so many first calls are tried:
///                     the number of passes and of looks into a queue depends on time, so later
///                     calls may never come
void ExpectThatEachCallMayFail(const MakeScenario& make, std::uint32_t callsOfPath = 5);

/// Reports whether this process is one that ExpectThatEachCallMayFail started for the runs.
[[nodiscard]] bool IsProcessOfTheRuns();

/// Notes a broken promise unless the condition holds.
/// @return condition
bool Expect(RunNotes& notes, bool condition, const std::string& broken);

} // namespace vqrx::test::anomaly
