// A worker that puts itself under supervision: started by whomever, it is started again by the
// supervisor from then on, should it die. Works until it is sent a line, then leaves in order.
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

        std::string line; // a real worker works here
        std::getline(std::cin, line);

        // Without this the supervisor would take the end for a death and start the program again.
        supervisor.Detach(self.daemonId);
        std::cout << "detached" << std::endl;
        return 0;
    } catch (const std::exception& exception) { // what() has the result code and its text
        std::cerr << exception.what() << std::endl;
        return 1;
    }
}
