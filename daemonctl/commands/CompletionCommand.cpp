#include "Commands.h"

#include "Completion.h"
#include "ExitCode.h"
#include "NamedValue.h"

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
    CLI::App* const command = app.add_subcommand(
        "completion", "Print a script with which a shell completes commands and options");
    command->add_option("SHELL", *shell, "Name of the shell")
        ->required()
        ->transform(NamedValue<std::string>({{"bash", "bash"}, {"powershell", "powershell"}}));
    command->footer("Examples:\n"
                    "  source <(daemonctl completion bash)\n"
                    "  daemonctl completion powershell | Out-String | Invoke-Expression");
    command->callback([&app, &exitCode, shell] {
        // bash would read a carriage return as part of a word.
        _setmode(_fileno(stdout), _O_BINARY);
        std::cout << (*shell == "bash" ? BashCompletion(app) : PowerShellCompletion(app));
        exitCode = kDone;
    });
}

} // namespace vqrx::client::v0
