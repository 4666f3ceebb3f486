// Child program that writes its exact command line to a file in UTF-8 and runs until it is ended.
// Argument: the file. The file has the ending ".part" until it is complete.
#include "ChildProgram.h"

int main(int argc, char** argv)
{
    vqrx::test::WriteCommandLine(vqrx::test::Argument(argc, argv, 1));
    Sleep(INFINITE);
}
