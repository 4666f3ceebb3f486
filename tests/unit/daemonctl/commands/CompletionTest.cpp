#include "Completion.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

struct Program {
    Program()
    {
        app.set_version_flag("--version", "1");
        CLI::App* const wait = app.add_subcommand("wait", "")->alias("await");
        wait->add_option("ID", id, "")->required();
        wait->add_option("--for", what, "")->check(CLI::IsMember({"running", "ended"}));
        wait->add_option("--timeout", what, "");
        app.add_subcommand("completion", "")
            ->add_option("SHELL", what, "")
            ->check(CLI::IsMember({"bash", "powershell"}));
    }
    CLI::App app{"", "prog"};
    int id = 0;
    std::string what;
};

void ExpectIn(const std::string& script, const std::string& line)
{
    EXPECT_NE(script.find(line), std::string::npos) << line << "\nin\n" << script;
}

TEST(BashCompletion, offers_the_commands_their_options_and_values)
{
    const std::string script = BashCompletion(Program().app);
    ExpectIn(script, "compgen -W 'wait completion --help --version' -- \"$word\"");
    ExpectIn(script, "        wait) words='--help --for --timeout' ;;\n");
    ExpectIn(script, "        completion) words='--help bash powershell' ;;\n");
    ExpectIn(script, "        await) words='--help --for --timeout' ;;\n");
    ExpectIn(script, "        help) words='wait completion' ;;\n");
    ExpectIn(script, "        'wait --for') words='running ended'; value=1 ;;\n");
    ExpectIn(script, "        'await --for') words='running ended'; value=1 ;;\n");
    ExpectIn(script, "        'wait --timeout') words=''; value=1 ;;\n");
    ExpectIn(script, "        wait|await)\n            [[ $word == *[!0-9]* ]] && return\n");
    ExpectIn(script, "< <(prog --daemon-ids \"$word\" 2>/dev/null)\n");
    ExpectIn(script, "complete -o default -F _prog prog prog.exe\n");
    EXPECT_EQ(script.find('\r'), std::string::npos);
}

TEST(PowerShellCompletion, offers_the_commands_their_options_and_values)
{
    const std::string script = PowerShellCompletion(Program().app);
    ExpectIn(script, "$top = @('wait', 'completion', '--help', '--version')\n");
    ExpectIn(script, "        'wait' = @('--help', '--for', '--timeout')\n");
    ExpectIn(script, "        'await' = @('--help', '--for', '--timeout')\n");
    ExpectIn(script, "        'help' = @('wait', 'completion')\n");
    ExpectIn(script, "        'wait --for' = @('running', 'ended')\n");
    ExpectIn(script, "        'wait --timeout' = @()\n");
    ExpectIn(script, "    $withDaemons = @('wait', 'await')\n");
    ExpectIn(script, "(Get-Command prog -CommandType Application)");
    ExpectIn(script, "::new($path,\n            \"--daemon-ids $wordToComplete\")\n");
    ExpectIn(script, "-CommandName prog, prog.exe ");
}

} // namespace
} // namespace vqrx::test
