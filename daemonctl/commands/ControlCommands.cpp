#include "Commands.h"

#include "ExitCode.h"
#include "LaunchedDaemon.h"
#include "Utf8.h"
#include "WithSupervisor.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::ArgumentCheck;
using daemon_manager::DaemonRequest;
using daemon_manager::SupervisorClient;

struct Arguments {
    std::string path;
    std::vector<std::string> rest;
    std::uint32_t id = 0;
    std::optional<std::uint32_t> waitSeconds; // launch; nothing: do not wait
    bool raw = false;

    [[nodiscard]] ArgumentCheck Check() const
    {
        return raw ? ArgumentCheck::kNone : ArgumentCheck::kRefuse;
    }
};

// Prints one of the two texts. @return the exit code
int Answer(bool done, const std::string& doneText, const std::string& nothingText)
{
    if (done) {
        std::cout << doneText << std::endl;
        return kDone;
    }
    std::cerr << "daemonctl: " << nothingText << std::endl;
    return kNothingToDo;
}

int Launch(SupervisorClient& supervisor, const Arguments& arguments)
{
    const DaemonRequest answer =
        supervisor.Launch(Wide(arguments.path), Wide(arguments.rest), arguments.Check());
    std::cout << answer.daemonId << std::endl;
    if (!answer.done) {
        std::cerr << "daemonctl: registered already, as daemon " << answer.daemonId << std::endl;
    }
    WarnAboutProgram(arguments.path, answer.daemonId);
    if (arguments.waitSeconds) {
        return WaitUntilItRuns(answer.daemonId, *arguments.waitSeconds);
    }
    return answer.done ? kDone : kNothingToDo;
}

int Attach(SupervisorClient& supervisor, const Arguments& arguments)
{
    const DaemonRequest answer =
        supervisor.Attach(arguments.id, Wide(arguments.rest), arguments.Check());
    if (answer.done) {
        WarnAboutSecondAttach(arguments.id, answer.daemonId);
    }
    return Answer(
        answer.done, std::to_string(answer.daemonId),
        "process " + std::to_string(arguments.id) +
            " could not be attached: it has ended, access to it is denied, or WMI does "
            "not know it\n  To see the messages of the supervisor: daemonctl log --tail 5");
}

int Detach(SupervisorClient& supervisor, const Arguments& arguments)
{
    const std::string id = std::to_string(arguments.id);
    return Answer(
        supervisor.Detach(arguments.id), "daemon " + id + " detached, its process runs on",
        "daemon " + id + " is unknown or was not attached\n  To see all daemons: daemonctl ps");
}

using Operation = int (*)(SupervisorClient&, const Arguments&);

CommandDefinition AddCommand(const CommandDefinition& app, int& exitCode, const char* name,
                             const char* description, Operation operation,
                             const std::shared_ptr<Arguments>& arguments)
{
    const CommandDefinition command = app.Command(name, description);
    command.OnChosen([&exitCode, operation, arguments] {
        exitCode = WithSupervisorAndLog(
            [&](SupervisorClient& supervisor) { return operation(supervisor, *arguments); });
    });
    return command;
}

void AddRaw(const CommandDefinition& command, Arguments& arguments)
{
    command.Flag("--raw", arguments.raw,
                 "Send the arguments as they are, even if the program gets others; must come "
                 "first");
}

} // namespace

void AddControlCommands(const CommandDefinition& app, int& exitCode,
                        const std::vector<std::string>& daemonArguments)
{
    const auto arguments = std::make_shared<Arguments>();
    arguments->rest = daemonArguments; // app parses none of them: ARG only stands in the help

    CommandDefinition command =
        AddCommand(app, exitCode, "launch",
                   "Start a program and keep it running; print its daemon id", Launch, arguments);
    AddRaw(command, *arguments);
    command.Option("PATH", arguments->path, "Full path of the program file")
        .Required()
        .Checked([](const std::string& path) { return path.empty() ? "the path is empty" : ""; });
    command
        .Option("--wait", arguments->waitSeconds,
                "Wait at most this many seconds until the program has run for two seconds, and "
                "print whether it runs; stands before PATH")
        .Word("SECONDS")
        .Decimal();
    command.Option("ARG", arguments->rest,
                   "Arguments for the program: everything after PATH, also dashes");
    command.Footer(
        "Example:\n  daemonctl launch C:\\FW\\App\\video.exe --input 3 \"two words\"\n"
        "  daemonctl launch --wait 10 C:\\FW\\App\\video.exe\n"
        "The command refuses arguments that the program would get changed: double quotes, a backslash\n"
        "after a part with blanks, characters that the code page lacks, and, for a batch file, the\n"
        "characters of the command interpreter.\n"
        "Exit code 1: this program with these arguments is registered already; the printed id is\n"
        "its daemon id. With --wait: the program does not run. Exit code 2: an argument was refused.");

    command = AddCommand(app, exitCode, "attach",
                         "Keep a running process alive; print its daemon id", Attach, arguments);
    AddRaw(command, *arguments);
    command.Option("PID", arguments->id, "Process id").Required().Decimal();
    command.Option("ARG", arguments->rest, "Arguments for a restart, only for a Windows service");
    command.Footer(
        "Example:\n  daemonctl attach 1234\n"
        "A restart uses the path and the arguments that the process has now; for a Windows\n"
        "service it uses the arguments given here.\n"
        "Exit code 1: the process could not be attached.");

    command =
        AddCommand(app, exitCode, "detach",
                   "End the supervision of an attached process, which runs on", Detach, arguments);
    command.Option("ID", arguments->id, "Daemon id, as ps shows it").Required().Decimal();
    command.Footer("Example:\n  daemonctl detach 4\n"
                   "Exit code 1: the id is unknown, or the daemon was not attached.");
}

} // namespace vqrx::client::v0
