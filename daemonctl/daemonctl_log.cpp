// The commands of daemonctl that need only a copy of a log file, for any system.
#include "Commands.h"
#include "ExitCode.h"
#include "FinishOutput.h"
#include "UsageError.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>

namespace {

// NOLINTNEXTLINE(google-build-using-namespace): this file is the client's main program
using namespace vqrx::client::v0;

int Run(int argc, char** argv)
{
    CLI::App app("Read log files of the DaemonManager supervisor", "daemonctl-log");
    app.require_subcommand(1);
    app.failure_message(UsageError);
    app.set_version_flag("--version", "daemonctl-log " DM_VERSION);
    app.footer("Exit codes: 0 done, 2 wrong usage, 4 output not written, 5 log unreadable.");
    int exitCode = kDone;
    AddLogCommand(app, exitCode, {});
    AddReportCommand(app, exitCode, {});
    AddRecordCommand(app, exitCode, {});
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUsage;
    }
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    try {
        return FinishOutput("daemonctl-log", Run(argc, argv));
    } catch (const std::exception& exception) {
        std::cerr << "daemonctl-log: " << exception.what() << std::endl;
    } catch (...) {
        std::cerr << "daemonctl-log: an error without a description" << std::endl;
    }
    return vqrx::client::v0::kRefused;
}
