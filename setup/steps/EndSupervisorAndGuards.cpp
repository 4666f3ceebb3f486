#include "EndSupervisorAndGuards.h"

#include "EndInRounds.h"
#include "GuardProcess.h"

#include <utility>

namespace vqrx::setup::v0 {

void EndSupervisorAndGuards(SupervisorChange& change, const std::string& folder,
                            const std::function<std::string()>& newListing, bool& endedGuard)
{
    const auto stopService = [&] {
        if (!folder.empty()) {
            StopGuardService(folder, endedGuard);
        }
    };
    bool isFirst = true;
    EndInRounds({[&] {
                     if (std::exchange(isFirst, false)) {
                         change.End(newListing(), stopService);
                         return change.Ran();
                     }
                     SupervisorChange later = change.LookAgain();
                     later.End(newListing(), stopService);
                     const bool ran = later.Ran();
                     change.Follow(std::move(later));
                     return ran;
                 },
                 [&](bool ran) {
                     GuardLimits limits;
                     limits.patienceMs = ran ? kGuardEndMs : 0;
                     return !folder.empty() && EndGuards(folder, limits, endedGuard);
                 }});
}

} // namespace vqrx::setup::v0
