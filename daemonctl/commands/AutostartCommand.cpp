#include "Commands.h"

#include "Autostart.h"
#include "AutostartWarnings.h"
#include "DoctorChecks.h"
#include "DoctorReport.h"
#include "ExitCode.h"
#include "GatherAutostart.h"
#include "InstalledPaths.h"
#include "NextStep.h"
#include "PasteableText.h"
#include "PrintText.h"
#include "Printable.h"
#include "SupervisorProcesses.h"
#include "Utf8.h"

#include <windows.h>

#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr ULONGLONG kFormerGuardMs = 20000; // an ending guard waits at most 15 s for a hand-over
// A service that stops waits two minutes for the end of the supervisor, too.
constexpr ULONGLONG kFormerServiceMs = 150000;
constexpr DWORD kLookAtGuardMs = 100;

struct AutostartOptions {
    std::string action;
    bool service = false;
    bool session = false;
    bool noStart = false;
    bool trust = false;
    std::string fleet;
};

int RefuseAutostart(int exitCode, const std::string& text, const std::string& step = kFindOutMore)
{
    std::cerr << "daemonctl: " << WithNextStep(Printable(text), step) << std::endl;
    return exitCode;
}

// The guard runs in another folder than this command.
std::string FullPath(const std::string& path)
{
    std::wstring full(32768, L'\0');
    full.resize(GetFullPathNameW(Wide(path).c_str(), static_cast<DWORD>(full.size()), full.data(),
                                 nullptr));
    return full.empty() ? path : Utf8(full);
}

// Prints what to do next. Windows shows the supervisor of a service only to programs of the
// account SYSTEM, so here only the guard's log shows what it does.
void PrintStarted(GuardMode mode)
{
    if (mode == GuardMode::kSession) {
        PrintText("the guard was started now; to wait for the supervisor: daemonctl wait --for "
                  "supervisor\n");
        return;
    }
    const std::string log = DefaultGuardLogPath();
    const std::string quoted = QuotedForPasting(log);
    PrintText("the guard was started now; to see what it does: daemonctl log --file " +
              (quoted.empty() ? Printable(log) : quoted) +
              "\nprograms of a desktop do not find the supervisor of a service: daemonctl wait "
              "--for supervisor needs a task of the account SYSTEM\n");
}

// Starts the guard. A guard whose supervisor has just ended on an order may still read the log and
// end a hand-over. Without a supervisor nobody can tell such a guard from one that waits between
// two starts. So this function waits for the end of both, and of a service that stops.
// @return false: a guard runs already, and goes on
bool StartAfterFormerGuard(const GuardCommand& command)
{
    const ULONGLONG begin = GetTickCount64();
    bool hasSaid = false;
    for (;;) {
        const GuardStart start = StartGuard(command);
        if (start == GuardStart::kStarted) {
            return true;
        }
        const bool isEnding = start == GuardStart::kEnding;
        const ULONGLONG limitMs = isEnding ? kFormerServiceMs : kFormerGuardMs;
        if ((!isEnding && !SupervisorProcesses().Running().empty()) ||
            GetTickCount64() - begin >= limitMs) {
            return false;
        }
        if (!hasSaid) {
            hasSaid = true;
            PrintText("waiting at most " + std::to_string(limitMs / 1000) +
                      " s until the former guard has ended\n");
        }
        Sleep(kLookAtGuardMs);
    }
}

// @param howToEndFormer  the command that ends a guard that runs already
void StartAndPrint(const GuardCommand& command, const std::string& howToEndFormer)
{
    if (StartAfterFormerGuard(command)) {
        PrintStarted(command.arguments.mode);
    } else {
        PrintText("a guard runs already, with its former settings: " + howToEndFormer +
                  ", then daemonctl autostart start\n");
    }
}

// Prints the errors and warnings of a fleet file.
// @return whether the file exists and has no error; warnings do not matter
bool CheckFleet(const std::string& path)
{
    AutostartFacts facts;
    ReadFleetFacts(path, facts);
    if (!facts.fleetThere) {
        std::cerr << "daemonctl: " << Printable(path) << " does not exist" << std::endl;
    }
    for (const std::string& error : facts.fleetErrors) {
        std::cerr << "daemonctl: " << Printable(path) << ", " << Printable(error) << std::endl;
    }
    for (const std::string& warning : facts.fleetWarnings) {
        std::cerr << "daemonctl: warning: " << Printable(path) << ", " << Printable(warning)
                  << std::endl;
    }
    return facts.fleetThere && facts.fleetErrors.empty();
}

int Install(const AutostartOptions& options)
{
    GuardCommand command;
    command.program = PathBesideThisProgram(kGuardProgram);
    command.arguments.mode = options.session ? GuardMode::kSession : GuardMode::kService;
    if (GetFileAttributesW(Wide(command.program).c_str()) == INVALID_FILE_ATTRIBUTES) {
        return RefuseAutostart(kRefused, command.program + " does not exist; nothing was done");
    }
    if (!options.fleet.empty()) {
        command.arguments.fleet = FullPath(options.fleet);
        if (!CheckFleet(command.arguments.fleet)) {
            return RefuseAutostart(
                kWrongUsage, "nothing was done",
                "For the form of a fleet file, with an example: daemonctl apply --help");
        }
    }
    command.arguments.trust = options.trust;
    // Asked before: InstallAutostart() may remove the service of a guard that runs on.
    const std::string howToEndFormer = CommandThatEndsGuard();
    InstallAutostart(command);
    WarnOfAutostart(command);
    const std::string how = options.session
                                ? "the guard starts when a user logs on: "
                                : "the guard starts with Windows, as the service DaemonGuard: ";
    PrintText(how + Printable(CommandLineOf(command)) + "\n");
    if (!options.noStart) {
        StartAndPrint(command, howToEndFormer);
    }
    return kDone;
}

int Remove()
{
    const std::string howToEnd = CommandThatEndsGuard();
    if (!RemoveAutostart()) {
        PrintText("nothing starts a guard at power-on\n");
        return kNothingToDo;
    }
    PrintText("no guard starts at power-on any more; a guard that runs goes on until " + howToEnd +
              "\n");
    return kDone;
}

int Start()
{
    const std::vector<AutostartEntry> entries = ReadAutostart();
    const auto command =
        entries.empty() ? std::nullopt : ParseGuardCommand(entries.front().commandLine);
    if (!command) {
        PrintText("no guard is set up; see daemonctl autostart --help\n");
        return kNothingToDo;
    }
    StartAndPrint(*command, CommandThatEndsGuard());
    return kDone;
}

int PrintStatus()
{
    const AutostartFacts facts = GatherAutostartFacts();
    std::vector<Finding> findings{JudgeAutostart(facts)};
    if (UsesSession(facts)) {
        findings.push_back(JudgeSession(facts.session));
    }
    if (UsesFleetFile(facts)) {
        findings.push_back(JudgeFleetFile(facts));
    }
    PrintText(DoctorText(findings));
    return facts.error.empty() && facts.entries.empty() ? static_cast<int>(kNothingToDo)
                                                        : ExitCodeOf(findings);
}

int Autostart(const AutostartOptions& options)
{
    if (options.action != "install" && (options.service || options.session || options.noStart ||
                                        options.trust || !options.fleet.empty())) {
        return RefuseAutostart(kWrongUsage, "this option needs autostart install",
                               "To see which options there are: daemonctl autostart --help");
    }
    try {
        if (options.action == "install") {
            return Install(options);
        }
        if (options.action == "start") {
            return Start();
        }
        return options.action == "remove" ? Remove() : PrintStatus();
    } catch (const std::exception& exception) {
        return RefuseAutostart(kRefused, exception.what());
    }
}

} // namespace

void AddAutostartCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<AutostartOptions>();
    const CommandDefinition command = app.Command(
        "autostart", "Let Windows start the supervisor, and a guard that keeps it running");
    command
        .Option("ACTION", options->action,
                "install, remove, or show the present status; start: start the guard now")
        .OneOf({"install", "remove", "status", "start"})
        .Required();
    const OptionDefinition service = command.Flag(
        "--service", options->service, "Start the guard with Windows, as a service (default)");
    command
        .Flag("--session", options->session,
              "Start the guard when a user logs on, for workers that need a desktop")
        .Excludes(service);
    command.Option("--fleet", options->fleet,
                   "Launch what this file names; default: fleet.txt in \\App, if it exists");
    command.Flag("--trust", options->trust,
                 "Let the guard believe a log and a fleet file that others than administrators "
                 "may change");
    command.Flag("--no-start", options->noStart, "Do not start the guard now");
    command.Footer(
        "Examples:\n"
        "  daemonctl autostart install --fleet C:\\FW\\App\\fleet.txt\n"
        "  daemonctl autostart install --session\n"
        "  daemonctl autostart status\n"
        "  daemonctl autostart remove\n"
        "The guard starts the supervisor, hands over what still runs of a former one, launches what\n"
        "the fleet file names, and starts the supervisor again if it ends without an order. The\n"
        "order daemonctl exit also ends the guard, until it is started again. On a desktop,\n"
        "daemonctl does not find the supervisor of the service: sc stop DaemonGuard ends both.\n"
        "The service has the rights of an administrator. With these rights the guard does not use a\n"
        "log or a fleet file that others may change. With --trust it uses them.\n"
        "install and remove need the rights of an administrator.\n"
        "Exit code 0: done, or all is well; 1: nothing is set up, or there are warnings; 2: the fleet\n"
        "file has a fault; 4: something failed.");
    command.OnChosen([&exitCode, options] { exitCode = Autostart(*options); });
}

} // namespace vqrx::client::v0
