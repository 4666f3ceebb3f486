#include "WithSupervisorAndLog.h"

#include "ExitCode.h"
#include "ThisMachine.h"

#include <iostream>

namespace vqrx::client::v0 {

int WithSupervisorAndLog(const std::function<int(daemon_manager::SupervisorClient&)>& operation)
{
    return WithSupervisor([&](daemon_manager::SupervisorClient& supervisor) -> int {
        try {
            return operation(supervisor);
        } catch (const LogUnreadable& error) {
            std::cerr << "daemonctl: " << error.what() << std::endl;
            return kLogUnreadable;
        }
    });
}

} // namespace vqrx::client::v0
