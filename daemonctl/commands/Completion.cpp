#include "Completion.h"

#include "UsageError.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using Words = std::vector<std::string>;

struct Command {
    std::string name;
    Words words;                         // options and the values of positional arguments
    std::map<std::string, Words> values; // permitted values by option; empty: any value
    bool takesDaemonId = false;
};

// The library keeps the permitted values of an option in the name of its type, such as
// "TEXT:{bash,powershell}".
Words AllowedValues(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    const std::size_t open = type.find('{');
    const std::size_t close = type.find('}', open);
    Words values;
    if (open != std::string::npos && close != std::string::npos) {
        for (const std::string& value :
             CLI::detail::split(type.substr(open + 1, close - open - 1), ',')) {
            values.push_back(value);
        }
    }
    return values;
}

Command Describe(const CLI::App& app)
{
    Command command;
    command.name = app.get_name();
    for (const CLI::Option* const option : app.get_options()) {
        const Words values = AllowedValues(*option);
        if (option->get_positional()) {
            command.words.insert(command.words.end(), values.begin(), values.end());
            command.takesDaemonId = command.takesDaemonId || option->get_name() == "ID";
            continue;
        }
        for (const std::string& name : option->get_lnames()) {
            command.words.push_back("--" + name);
            if (option->get_items_expected_max() > 0) {
                command.values["--" + name] = values;
            }
        }
    }
    return command;
}

// Describes each command under each of its names, and "help", which takes the name of a command.
std::vector<Command> DescribeCommands(const CLI::App& app)
{
    std::vector<Command> commands;
    for (const CLI::App* const command :
         app.get_subcommands([](const CLI::App*) { return true; })) {
        Command described = Describe(*command);
        commands.push_back(described);
        for (const std::string& alias : command->get_aliases()) {
            described.name = alias;
            commands.push_back(described);
        }
    }
    Command help;
    help.name = "help";
    help.words = CommandNames(app);
    commands.push_back(std::move(help));
    return commands;
}

Words TopWords(const CLI::App& app)
{
    Words words = CommandNames(app);
    const Words options = Describe(app).words;
    words.insert(words.end(), options.begin(), options.end());
    return words;
}

std::string Joined(const Words& words, const std::string& quote, const std::string& separator)
{
    std::string text;
    for (const std::string& word : words) {
        text += (text.empty() ? "" : separator) + quote;
        text += word + quote;
    }
    return text;
}

std::string BashList(const Words& words)
{
    return "'" + Joined(words, "", " ") + "'";
}

// Offers the daemon ids. When bash lists what it offers (COMP_TYPE 63, the code of "?"), each id
// has its command beside it. If the ids do not come in time, they are not offered.
std::string BashDaemons(const std::string& program, const std::string& commands)
{
    return commands.empty()
               ? std::string()
               : "    case \"$command$value\" in\n"
                 "        " +
                     commands +
                     ")\n"
                     "            [[ $word == *[!0-9]* ]] && return\n"
                     "            local ids id what\n"
                     "            IFS= read -r -d '' -t \"${DAEMONCTL_COMPLETION_SECONDS:-0.3}\" ids \\\n"
                     "                < <(" +
                     program +
                     " --daemon-ids \"$word\" 2>/dev/null)\n"
                     "            [ $? -le 128 ] || ids=\n"
                     "            while read -r id what; do\n"
                     "                [ -n \"$id\" ] || continue\n"
                     "                [ \"${COMP_TYPE:-9}\" = 63 ] && id=\"$id  ($what)\"\n"
                     "                COMPREPLY+=(\"$id\")\n"
                     "            done <<<\"$ids\" ;;\n"
                     "    esac\n";
}

// Offers the daemon ids, each with its command. If the ids do not come in time, they are not
// offered.
std::string PowerShellDaemons(const std::string& program)
{
    return "        $path = @(Get-Command " + program +
           " -CommandType Application)[0].Path\n"
           "        $start = [System.Diagnostics.ProcessStartInfo]::new($path,\n"
           "            \"--daemon-ids $wordToComplete\")\n"
           "        $start.UseShellExecute = $false\n"
           "        $start.RedirectStandardOutput = $true\n"
           "        $start.RedirectStandardError = $true\n"
           "        $start.StandardOutputEncoding = [System.Text.Encoding]::UTF8\n"
           "        $limit = 0.3\n"
           "        if ($env:DAEMONCTL_COMPLETION_SECONDS) {\n"
           "            $limit = [double]$env:DAEMONCTL_COMPLETION_SECONDS\n"
           "        }\n"
           "        $asked = [System.Diagnostics.Process]::Start($start)\n"
           "        $answer = $asked.StandardOutput.ReadToEndAsync()\n"
           "        $lines = if ($answer.Wait([int](1000 * $limit))) { $answer.Result -split \"`n\" }\n"
           "            else { $asked.Kill() }\n"
           "        foreach ($line in $lines) {\n"
           "            $id, $command = $line -split ' ', 2\n"
           "            if ($id -and $id -like \"$wordToComplete*\") {\n"
           "                [System.Management.Automation.CompletionResult]::new($id,\n"
           "                    \"$id  ($command)\", 'ParameterValue', $command)\n"
           "            }\n"
           "        }\n";
}

std::string PowerShellList(const Words& words)
{
    return "@(" + Joined(words, "'", ", ") + ")";
}

} // namespace

std::string BashCompletion(const CLI::App& app)
{
    const std::string& program = app.get_name();
    std::string ids;
    std::string commands;
    std::string values;
    for (const Command& command : DescribeCommands(app)) {
        commands += "        " + command.name + ") words=" + BashList(command.words) + " ;;\n";
        if (command.takesDaemonId) {
            ids += (ids.empty() ? "" : "|") + command.name;
        }
        for (const auto& [option, allowed] : command.values) {
            values += "        '" + command.name + " " + option + "') words=" + BashList(allowed) +
                      "; value=1 ;;\n";
        }
    }
    return "# Completion of " + program + " in bash. Once:   source <(" + program +
           " completion bash)\n"
           "# For good:  " +
           program +
           " completion bash >> ~/.bashrc\n"
           "_" +
           program +
           "()\n"
           "{\n"
           "    local command=${COMP_WORDS[1]} word=${COMP_WORDS[COMP_CWORD]}\n"
           "    local previous=${COMP_WORDS[COMP_CWORD-1]} words= value=\n"
           "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
           "        COMPREPLY=($(compgen -W " +
           BashList(TopWords(app)) +
           " -- \"$word\"))\n"
           "        return\n"
           "    fi\n"
           "    case \"$command\" in\n" +
           commands +
           "    esac\n"
           "    case \"$command $previous\" in\n" +
           values +
           "    esac\n"
           "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n" +
           BashDaemons(program, ids) +
           "}\n"
           "complete -o default -F _" +
           program + " " + program + " " + program + ".exe\n";
}

std::string PowerShellCompletion(const CLI::App& app)
{
    const std::string& program = app.get_name();
    std::string commands;
    Words daemonCommands;
    std::string values;
    for (const Command& command : DescribeCommands(app)) {
        if (command.takesDaemonId) {
            daemonCommands.push_back(command.name);
        }
        commands += "        '" + command.name + "' = " + PowerShellList(command.words) + "\n";
        for (const auto& [option, allowed] : command.values) {
            values +=
                "        '" + command.name + " " + option + "' = " + PowerShellList(allowed) + "\n";
        }
    }
    return "# Completion of " + program +
           " in PowerShell. Once:\n"
           "#   " +
           program +
           " completion powershell | Out-String | Invoke-Expression\n"
           "# For good:  " +
           program +
           " completion powershell >> $PROFILE\n"
           "Register-ArgumentCompleter -Native -CommandName " +
           program + ", " + program +
           ".exe -ScriptBlock {\n"
           "    param($wordToComplete, $commandAst, $cursorPosition)\n"
           "    $top = " +
           PowerShellList(TopWords(app)) +
           "\n"
           "    $commands = @{\n" +
           commands +
           "    }\n"
           "    $values = @{\n" +
           values +
           "    }\n"
           "    $withDaemons = " +
           PowerShellList(daemonCommands) +
           "\n"
           "    $words = @($commandAst.CommandElements | ForEach-Object { $_.ToString() })\n"
           "    $before = if ($wordToComplete -eq '') { $words.Count } else { $words.Count - 1 }\n"
           "    $option = \"$($words[1]) $($words[$before - 1])\"\n"
           "    $found = if ($before -le 1) { $top }\n"
           "        elseif ($values.ContainsKey($option)) { $values[$option] }\n"
           "        else { $commands[$words[1]] }\n"
           "    if ($before -gt 1 -and $withDaemons -contains $words[1] -and\n"
           "        $wordToComplete -match '^[0-9]*$' -and -not $values.ContainsKey($option)) {\n" +
           PowerShellDaemons(program) +
           "    }\n"
           "    $found | Where-Object { $_ -like \"$wordToComplete*\" } | ForEach-Object {\n"
           "        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)\n"
           "    }\n"
           "}\n";
}

} // namespace vqrx::client::v0
