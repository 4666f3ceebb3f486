#include "ProgramBody.h"

#include <exception>
#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    // Nothing else writes to standard error; coupled to the C library's unbuffered stream, every
    // character would be a call to the console of its own.
    std::ios::sync_with_stdio(false);
    try {
        const std::vector<std::string> arguments(argv, argv + argc); // there are no options
        return vqrx::app::v0::RunProgram();
    } catch (const std::exception& exception) {
        std::cerr << "Error: " << exception.what() << std::endl;
    } catch (...) {
        std::cerr << "Unknown error\n";
    }
    return 1;
}
