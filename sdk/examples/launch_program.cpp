// launch_program PROGRAM [ARGUMENT...]: asks the supervisor to start a program and keep it running.
#include <daemon_manager/ComApartment.h>
#include <daemon_manager/SupervisorClient.h>

#include <exception>
#include <iostream>
#include <string>
#include <vector>

int wmain(int argc, wchar_t** argv)
{
    if (argc < 2) {
        std::cerr << "launch_program PROGRAM [ARGUMENT...]" << std::endl;
        return 2;
    }
    const std::vector<std::wstring> arguments(argv + 2, argv + argc);
    try {
        const daemon_manager::ComApartment com;
        daemon_manager::SupervisorClient supervisor;
        const auto daemon = supervisor.Launch(argv[1], arguments);
        std::cout << "daemon " << daemon.daemonId
                  << (daemon.done ? " is started and kept running" : " is registered already")
                  << std::endl;
        return 0;
    } catch (const daemon_manager::SupervisorNotRunning&) {
        std::cerr << "start DaemonManager.exe first" << std::endl;
    } catch (const daemon_manager::ProxyNotRegistered&) {
        std::cerr << "register DaemonMgrPS.dll first" << std::endl;
    } catch (const daemon_manager::SupervisorError& error) { // what() contains the result code
        std::cerr << error.what() << std::endl;
    } catch (const std::exception& exception) {
        std::cerr << exception.what() << std::endl;
    }
    return 1;
}
