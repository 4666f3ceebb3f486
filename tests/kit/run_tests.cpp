// run-tests.exe: tests DaemonManager on this machine, with the programs of the kit beside it, and
// writes the reports. See HelpText() for options and exit codes.
#include "KitSession.h"
#include "Options.h"

#include "Utf8.h"

#include <exception>
#include <iostream>

int main()
{
    using namespace vqrx;
    try {
        std::vector<std::string> arguments = client::v0::Utf8Arguments();
        arguments.erase(arguments.begin());
        const kit::Options options = kit::ReadOptions(arguments);
        if (options.help) {
            std::cout << kit::HelpText();
            return 0;
        }
        return kit::RunKit(options);
    } catch (const kit::UsageError& error) {
        std::cerr << "run-tests: " << error.what() << " (see run-tests --help)" << std::endl;
    } catch (const std::exception& error) {
        std::cerr << "run-tests: " << error.what() << std::endl;
    }
    kit::WaitForKeyOfOwnConsole();
    return 2;
}
