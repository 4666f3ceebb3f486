#include "ProgramBody.h"
#include "system_library/LibrarySearch.h"

#include <exception>
#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv)
{
    vqrx::cpp_utils::system_library::v1::SearchLibrariesInSystemFolder();
    // std::cerr is the only writer to standard error. While it is tied to the C library's stream,
    // which has no buffer, it would call Windows once for each character.
    std::ios::sync_with_stdio(false);
    try {
        // The program has no options: the arguments are not used.
        const std::vector<std::string> arguments(argv, argv + argc);
        return vqrx::app::v0::RunProgram();
    } catch (const std::exception& exception) {
        std::cerr << "Error: " << exception.what() << std::endl;
    } catch (...) {
        std::cerr << "Unknown error\n";
    }
    return 1;
}
