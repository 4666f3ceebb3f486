// Writes the exact command line it got, in UTF-8, into the file that its first argument names
// (".part" until it is complete), and runs on.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::WriteCommandLine(vqrx::test::Argument(argc, argv, 1));
    Sleep(INFINITE);
}
