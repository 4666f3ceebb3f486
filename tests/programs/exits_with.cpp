// Child program that ends immediately. Argument: its exit code.
#include "ChildProgram.h"

#include <cstdlib>

int main(int argc, char** argv)
{
    return static_cast<int>(std::strtoul(vqrx::test::Argument(argc, argv, 1).c_str(), nullptr, 0));
}
