#include "Commands.h"

#include "DoctorChecks.h"
#include "DoctorGathering.h"
#include "DoctorReport.h"
#include "ErrorText.h"
#include "ExitCode.h"
#include "FirewallChecks.h"
#include "PrintText.h"
#include "Printable.h"
#include "com/ClientApartment.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

struct DoctorOptions {
    bool json = false;
    bool prune = false;
};

// Removes the dead rules.
// @param failed  set to true if a rule could not be removed
// @return the names of the removed rules
std::vector<std::string> Prune(const FirewallRulesFacts& rules, bool& failed)
{
    const system::com::v1::ClientApartment apartment;
    std::vector<std::string> removed;
    for (const std::string& name : DeadRules(rules)) {
        const long result = RemoveFirewallRule(name);
        if (result < 0) {
            failed = true;
            std::cerr << "daemonctl: rule \"" << Printable(name)
                      << "\" could not be removed: " << ResultText(result)
                      << "\n  As administrator: daemonctl doctor --prune" << std::endl;
        } else {
            removed.push_back(name);
        }
    }
    return removed;
}

int Doctor(const DoctorOptions& options)
{
    const DoctorFacts facts = GatherDoctorFacts();
    const std::vector<Finding> findings = Judge(facts);
    int exitCode = ExitCodeOf(findings);
    if (!options.json) {
        PrintText(DoctorText(findings));
    }
    std::vector<std::string> removed;
    if (options.prune) {
        bool failed = false;
        removed = Prune(facts.firewallRules, failed);
        exitCode = failed ? static_cast<int>(kRefused) : exitCode;
    }
    if (options.json) {
        PrintText(DoctorJson(findings, facts.version, removed));
    } else {
        for (const std::string& name : removed) {
            PrintText("removed \"" + Printable(name) + "\"\n");
        }
    }
    return exitCode;
}

} // namespace

void AddDoctorCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<DoctorOptions>();
    const CommandDefinition command =
        app.Command("doctor", "Check what the supervisor needs, and print how to mend each fault");
    command.Flag("--json", options->json, "Print one JSON object");
    command.Flag("--prune", options->prune,
                 "Print the firewall rules of programs that are gone, and remove them");
    command.Footer(
        "Examples:\n"
        "  daemonctl doctor\n"
        "  daemonctl doctor --prune\n"
        "  daemonctl doctor --json\n"
        "Exit code 0: all is well; 1: there are warnings; 3: no supervisor runs, or its\n"
        "proxy/stub is not registered, and nothing else failed; 4: another check or a\n"
        "removal failed. Without --prune the command changes nothing.");
    command.OnChosen([&exitCode, options] { exitCode = Doctor(*options); });
}

} // namespace vqrx::client::v0
