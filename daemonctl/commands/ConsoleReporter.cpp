#include "ConsoleReporter.h"

#include "PrintText.h"

#include <iostream>

namespace vqrx::client::v0 {

Reporter ConsoleReporter()
{
    const auto print = [](const std::string& line) { PrintText(line + "\n"); };
    const auto complain = [](const std::string& line) {
        std::cerr << "daemonctl: " << line << std::endl;
    };
    return {print, complain, complain};
}

} // namespace vqrx::client::v0
