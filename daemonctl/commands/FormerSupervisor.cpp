#include "FormerSupervisor.h"

#include "ShutdownProgress.h"

#include <iostream>
#include <vector>

namespace vqrx::client::v0 {

bool WaitForFormerSupervisor(const SupervisorProcesses& processes, const FormerSupervisorWait& wait)
{
    std::vector<ProcessFacts> former = processes.Running();
    if (former.size() <= 1) {
        return true;
    }
    former.pop_back();
    std::cerr << "daemonctl: "
              << (wait.dryRun ? wait.command + " would wait" : std::string("waiting"))
              << " until the former supervisor has ended: " << NamesOf(former) << std::endl;
    if (wait.dryRun || processes.WaitUntilAtMost(1, std::uint64_t{wait.timeoutSeconds} * 1000)) {
        return true;
    }
    std::cerr << "daemonctl: it still runs after " << wait.timeoutSeconds
              << " s; nothing was done, because two supervisors would restart the same daemons"
              << std::endl;
    return false;
}

} // namespace vqrx::client::v0
