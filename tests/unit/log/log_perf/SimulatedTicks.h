#pragma once

#include "ImportPatch.h"

#include <windows.h>

#include <vector>

namespace vqrx::test {

/// Replaces the system tick that the logger reads. Must be made before the logger and outlive it.
class SimulatedTicks {
public:
    enum class Mode {
        kStandsStill, ///< only Advance moves the tick
        kRuns         ///< each wait of the worker that times out moves the tick by its timeout
    };
    SimulatedTicks(DWORD start, Mode mode);

    void Advance(DWORD milliseconds);

    /// One wait of the worker: the tick at its start, its timeout in milliseconds, and its result.
    struct Wait {
        DWORD tick;
        DWORD timeout;
        bool timedOut;
    };
    /// The worker's first 100 waits.
    static std::vector<Wait> Waits();

private:
    ImportPatch tick_;
    ImportPatch wait_;
};

} // namespace vqrx::test
