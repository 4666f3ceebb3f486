#pragma once

#include "ImportPatch.h"

#include <windows.h>

#include <vector>

namespace vqrx::test {

/// The tick that the program under test reads. Made before the logger and destroyed after it.
class SimulatedTicks {
public:
    enum class Mode {
        kStandsStill, ///< only Advance moves it
        kRuns         ///< a wait of the logger's worker that times out moves it by its time-out
    };
    SimulatedTicks(DWORD start, Mode mode);

    void Advance(DWORD milliseconds);

    /// The time-outs of the worker's first 100 waits, and for each the tick at which it began.
    struct Wait {
        DWORD tick;
        DWORD timeout;
        bool timedOut;
    };
    static std::vector<Wait> Waits();

private:
    ImportPatch tick_;
    ImportPatch wait_;
};

} // namespace vqrx::test
