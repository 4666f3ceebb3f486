// Runs the real supervisor under a mixed load and compares it with a model:
// - Every daemon that has to run does run, once, and no other daemon runs.
// - No id is used twice.
// - The log shows every line once and loses no record.
// - The supervisor's memory, handles and threads do not grow, except for one process handle for
//   every restart.
// Options: see Options.h. Exit code: 0 without a failure, else 1.
#include "EnduranceRun.h"
#include "Options.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    try {
        vqrx::test::EnduranceRun run(vqrx::test::ReadOptions(argc, argv));
        return run.Run() ? 0 : 1;
    } catch (const std::exception& exception) {
        std::cout << "endurance: " << exception.what() << std::endl;
        return 1;
    }
}
