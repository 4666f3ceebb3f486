// A worker that attaches itself to the supervisor. From then on the supervisor starts the worker
// again if it dies. The worker runs until it reads a line, and then detaches itself.
#include <daemon_manager/ComApartment.h>
#include <daemon_manager/SupervisorClient.h>

#include <exception>
#include <iostream>
#include <string>

int wmain()
{
    try {
        const daemon_manager::ComApartment com;
        daemon_manager::SupervisorClient supervisor;
        const auto self = supervisor.Attach(GetCurrentProcessId());
        if (!self.done) {
            std::cerr << "the supervisor could not inspect this process" << std::endl;
            return 1;
        }
        std::cout << "attached as daemon " << self.daemonId << std::endl;

        std::string line; // a real worker does its work here
        std::getline(std::cin, line);

        // Without this call the supervisor would start the program again after its end.
        supervisor.Detach(self.daemonId);
        std::cout << "detached" << std::endl;
        return 0;
    } catch (const std::exception& exception) { // what() contains the result code
        std::cerr << exception.what() << std::endl;
        return 1;
    }
}
