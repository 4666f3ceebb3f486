#include "WithSupervisor.h"

#include "ExitCode.h"
#include "Printable.h"
#include "ThisMachine.h"
#include "com/ComApartment.h"
#include "exception_utils/COMException.h"

#include <iostream>

namespace vqrx::client::v0 {

int WithSupervisor(const std::function<int(daemon_manager::SupervisorClient&)>& operation)
{
    try {
        const system::com::v1::ComApartment apartment;
        daemon_manager::SupervisorClient supervisor;
        return operation(supervisor);
    } catch (const daemon_manager::SupervisorNotRunning& exception) {
        std::cerr << "daemonctl: " << exception.what()
                  << "\n  Start DaemonManager.exe as this user or as administrator." << std::endl;
        return kNoSupervisor;
    } catch (const daemon_manager::ProxyNotRegistered& exception) {
        std::cerr << "daemonctl: " << exception.what()
                  << "\n  As administrator: regsvr32 DaemonMgrPS.dll" << std::endl;
        return kNoSupervisor;
    } catch (const daemon_manager::SupervisorNotTrusted& exception) {
        std::cerr << "daemonctl: " << Printable(exception.what())
                  << "\n  Nothing was asked of it. To find out more: daemonctl doctor" << std::endl;
        return kRefused;
    } catch (const daemon_manager::UnsafeArgument& exception) {
        std::cerr << "daemonctl: " << exception.what()
                  << "\n  To send it as it is: --raw directly after the name of the command"
                  << std::endl;
        return kWrongUsage;
    } catch (const std::exception& exception) {
        std::cerr << "daemonctl: refused: " << exception.what() << std::endl;
        return kRefused;
    }
}

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
