#include "Commands.h"

#include "Completion.h"
#include "ExitCode.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

namespace vqrx::client::v0 {

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
        // bash would read a carriage return as part of a word.
        _setmode(_fileno(stdout), _O_BINARY);
        std::cout << (*shell == "bash" ? BashCompletion(app) : PowerShellCompletion(app));
        exitCode = kDone;
    });
}

} // namespace vqrx::client::v0
