#include "Commands.h"

#include "Completion.h"
#include "DaemonIds.h"
#include "ExitCode.h"
#include "PrintText.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"
#include "TimeText.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

namespace vqrx::client::v0 {
namespace {

// bash would read a carriage return as part of a word.
void LeaveLineEndsAlone()
{
    _setmode(_fileno(stdout), _O_BINARY);
}

} // namespace

void AddCompletionCommand(CLI::App& app, int& exitCode)
{
    const auto shell = std::make_shared<std::string>();
    const CommandDefinition command = CommandDefinition(app).Command(
        "completion", "Print a script with which a shell completes commands and options");
    command
        .Choice<std::string>("SHELL", *shell, {{"bash", "bash"}, {"powershell", "powershell"}},
                             "Name of the shell")
        .Required();
    command.Footer("Examples:\n"
                   "  source <(daemonctl completion bash)\n"
                   "  daemonctl completion powershell | Out-String | Invoke-Expression");
    command.OnChosen([&app, &exitCode, shell] {
        LeaveLineEndsAlone();
        std::cout << (*shell == "bash" ? BashCompletion(app) : PowerShellCompletion(app));
        exitCode = kDone;
    });
}

int PrintDaemonIds(std::string_view prefix)
{
    LeaveLineEndsAlone();
    if (!IsSupervisorListed()) {
        return kNoSupervisor;
    }
    try {
        const Timeline timeline = ReadTimeline();
        const SupervisorRun* const run = FindRunOfThisMachine(timeline);
        if (run == nullptr) {
            return kLogUnreadable;
        }
        PrintText(DaemonIdLines(*run, NowMs(), prefix));
        return kDone;
    } catch (const LogUnreadable&) { // nobody reads a message while a word is completed
        return kLogUnreadable;
    }
}

} // namespace vqrx::client::v0
