#include "AdministratorTrust.h"
#include "Commands.h"
#include "DaemonArguments.h"
#include "ExitCode.h"
#include "FinishOutput.h"
#include "InstalledPaths.h"
#include "NextStep.h"
#include "UsageError.h"
#include "Utf8.h"
#include "WithSupervisor.h"
#include "system_library/LibrarySearch.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <vector>

namespace {

// NOLINTNEXTLINE(google-build-using-namespace): this file is the client's main program
using namespace vqrx::client::v0;

int Run()
{
    CLI::App app("Control the DaemonManager supervisor of this machine", "daemonctl");
    app.require_subcommand(1);
    app.failure_message(UsageError);
    app.set_version_flag("--version", "daemonctl " DM_VERSION);
    app.footer("Which programs run, and why did daemon 3 end last night?\n"
               "  daemonctl ps\n"
               "  daemonctl log --daemon 3 --since yesterday\n"
               "Something does not work?\n"
               "  daemonctl doctor\n"
               "For more about a command, with examples: daemonctl COMMAND --help\n\n"
               "Exit codes: 0 done, 1 not done or the answer is no, 2 wrong usage, 3 no\n"
               "supervisor runs or DaemonMgrPS.dll is not registered, 4 refused or output not\n"
               "written, 5 log unreadable.");
    int exitCode = kDone;
    const CommandLine commandLine = SplitCommandLine(WithoutHelpCommand(Utf8Arguments()));
    AddControlCommands(app, exitCode, commandLine.daemons);
    AddStopCommand(app, exitCode);
    AddExitCommand(app, exitCode);
    AddPsCommand(app, exitCode);
    AddLogCommand(app, exitCode, DefaultLogPath);
    AddWaitCommand(app, exitCode);
    AddCheckCommand(app, exitCode);
    AddApplyCommand(app, exitCode);
    AddReattachCommand(app, exitCode);
    AddRestartCommand(app, exitCode);
    AddReportCommand(app, exitCode, DefaultLogPath, StateOfSupervisor, LookAtThisMachine);
    AddMetricsCommand(app, exitCode);
    AddWatchCommand(app, exitCode);
    AddRecordCommand(app, exitCode, DefaultLogPath, CanRecordInto);
    AddDoctorCommand(app, exitCode);
    AddRightsCommand(app, exitCode);
    AddAutostartCommand(app, exitCode);
    AddCompletionCommand(app, exitCode);

    std::vector<const char*> pointers;
    pointers.reserve(commandLine.ours.size());
    for (const std::string& argument : commandLine.ours) {
        pointers.push_back(argument.c_str());
    }
    try {
        app.parse(static_cast<int>(pointers.size()), pointers.data());
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kWrongUsage; // --help and --version end here too
    }
    return exitCode;
}

} // namespace

int main(int argc, char** argv)
{
    vqrx::cpp_utils::system_library::v1::SearchLibrariesInSystemFolder();
    try {
        // First, because somebody waits who completes a word.
        if (argc > 1 && argv[1] == kDaemonIdsWord) {
            return FinishOutput("daemonctl", PrintDaemonIds(argc > 2 ? argv[2] : ""));
        }
        return FinishOutput("daemonctl", Run());
    } catch (const std::exception& exception) {
        std::cerr << "daemonctl: " << WithNextStep(exception.what()) << std::endl;
    } catch (...) {
        std::cerr << "daemonctl: " << WithNextStep("an error without a description") << std::endl;
    }
    return vqrx::client::v0::kRefused;
}
