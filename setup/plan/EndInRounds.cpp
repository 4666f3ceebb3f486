#include "EndInRounds.h"

#include "SetupError.h"

#include <string>

namespace vqrx::setup::v0 {

void EndInRounds(const EndActions& actions)
{
    constexpr int kRounds = 10;
    for (int round = 0; round < kRounds; ++round) {
        const bool ran = actions.endSupervisors();
        if (!actions.endGuards(ran)) {
            return;
        }
    }
    throw SetupError("Somebody starts the guard, DaemonGuard.exe, again and again: it was ended " +
                     std::to_string(kRounds) +
                     " times. Find the program that starts it, and end it. Then try again.");
}

} // namespace vqrx::setup::v0
