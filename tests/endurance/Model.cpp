#include "Model.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace vqrx::test {
namespace {

using State = JournalDaemon::State;

std::wstring Wide(const std::string& text)
{
    return {text.begin(), text.end()};
}

} // namespace

Model::Model(SupervisorProcess& supervisor, const Fleet& fleet, Clients& clients,
             const Followers& followers, HANDLE ranTwice, Failures& failures)
    : supervisor_(supervisor)
    , fleet_(fleet)
    , clients_(clients)
    , followers_(followers)
    , ranTwice_(ranTwice)
    , failures_(failures)
{
}

// Returns a text that names each daemon that wrongly runs or wrongly does not run; empty if there
// is none.
std::string Model::Differences() const
{
    std::ostringstream text;
    for (const std::string& name : fleet_.Running()) {
        if (!HoldsName(name)) {
            text << name << " does not run; ";
        }
    }
    for (const auto& [name, daemon] : clients_.Daemons()) {
        const bool runs = HoldsName(name);
        if ((daemon.state == State::kLaunched || daemon.state == State::kAttached) && !runs) {
            text << name << " does not run; ";
        }
        if ((daemon.state == State::kStopped || daemon.state == State::kDetached) && runs) {
            text << name << " runs; ";
        }
    }
    for (const auto& [name, attempts] : fleet_.Attempts(followers_.Ledger())) {
        const auto before = attempts_.find(name);
        if (attempts <= (before == attempts_.end() ? 0 : before->second)) {
            text << name << " was not started again; ";
        }
    }
    return text.str();
}

void Model::Check()
{
    if (!supervisor_.Process().Running()) {
        failures_.Add("the supervisor has ended: " + supervisor_.Process().Error());
        return;
    }
    const ULONGLONG start = GetTickCount64();
    std::string differences = Differences();
    while (!differences.empty() && GetTickCount64() - start < kDeadlineMs) {
        Sleep(100);
        differences = Differences();
    }
    if (!differences.empty()) {
        failures_.Add(differences);
    }
    attempts_ = fleet_.Attempts(followers_.Ledger());
    if (WaitForSingleObject(ranTwice_, 0) == WAIT_OBJECT_0) {
        failures_.Add("a daemon ran twice at the same time");
    }
    if (!followers_.Failure().empty()) {
        failures_.Add(followers_.Failure());
    }
    if (followers_.Ledger().Count("Overflowed message queue.") != 0) {
        failures_.Add("the message queue has overflowed");
    }
    CheckIds();
}

void Model::CheckIds()
{
    std::map<DWORD, std::string> owners;
    const auto record = [&](DWORD id, const std::string& name) {
        const auto [owner, isNew] = owners.emplace(id, name);
        if (!isNew) {
            failures_.Add("id " + std::to_string(id) + " was used twice: " + owner->second +
                          " and " + name);
        }
    };
    for (const auto& daemon : fleet_.Daemons()) {
        record(daemon.id, daemon.name);
    }
    for (const auto& [name, daemon] : clients_.Daemons()) {
        if (daemon.state != State::kLaunching && daemon.state != State::kAttaching) {
            record(daemon.id, name); // A client that was killed in the call did not receive the id.
        }
    }
    for (const DWORD id : followers_.Ledger().IdsUsedTwice()) {
        failures_.Add("the log shows id " + std::to_string(id) + " for two daemons");
    }
}

Model::Registered Model::Settle()
{
    if (const std::string failure = clients_.End(); !failure.empty()) {
        failures_.Add(failure);
    }
    Check();
    std::vector<std::string> started;
    std::vector<std::string> ended;
    std::size_t registered = fleet_.Daemons().size();
    std::size_t unknown = 0;
    for (const auto& [name, daemon] : clients_.Daemons()) {
        switch (daemon.state) {
        case State::kLaunched:
        case State::kAttached:
            ++registered;
            break;
        case State::kLaunching: // A second launch returns the first id, or launches the daemon now.
            supervisor_.Client().Launch(Wide(EnduranceProgram(daemon.kind)),
                                        {Wide(daemon.kind), Wide(name)});
            ++registered;
            started.push_back(name);
            break;
        case State::kStopping: // The killed call stopped the daemon, or it did nothing.
            supervisor_.Client().Stop(daemon.id);
            ended.push_back(name);
            break;
        case State::kDetaching:
            supervisor_.Client().Detach(daemon.id);
            break;
        case State::kAttaching: // The client did not receive the id, so the test cannot detach.
            ++unknown;
            break;
        default:
            break;
        }
    }
    const bool settled = WaitUntil([&] {
        return std::all_of(started.begin(), started.end(), HoldsName) &&
               std::none_of(ended.begin(), ended.end(), HoldsName);
    });
    if (!settled) {
        failures_.Add("a repeated call of a killed client did not take effect");
    }
    return {registered, registered + unknown};
}

void Model::CheckLinesOfDaemons()
{
    const LogLedger& ledger = followers_.Ledger();
    for (const auto& daemon : fleet_.Daemons()) {
        const DaemonLines lines = ledger.Of(daemon.id);
        const bool launched = daemon.kind != "attached" && daemon.kind != "missing";
        if (lines.firstStarts != (launched ? 1U : 0U) ||
            lines.attaches != (daemon.kind == "attached" ? 1U : 0U) || lines.stops != 0) {
            failures_.Add("the log does not show each line of " + daemon.name + " once");
        }
    }
    for (const auto& [name, daemon] : clients_.Daemons()) {
        const DaemonLines lines = ledger.Of(daemon.id);
        const bool launched = daemon.state <= State::kStopped && daemon.kind != "";
        if ((daemon.state == State::kLaunched && lines.firstStarts != 1) ||
            (daemon.state == State::kStopped && lines.stops != lines.firstStarts) ||
            (daemon.state == State::kAttached && lines.attaches != 1) ||
            (daemon.state == State::kDetached && (lines.attaches != 1 || lines.detaches != 1)) ||
            (launched && lines.firstStarts > 1)) {
            failures_.Add("the log does not show each line of " + name + " once");
        }
    }
}

void Model::CheckLog(const Registered& registered)
{
    CheckLinesOfDaemons();
    const LogLedger& ledger = followers_.Ledger();
    if (ledger.Count(Fleet::kKilled) != fleet_.Killed()) {
        failures_.Add("the test killed " + std::to_string(fleet_.Killed()) +
                      " daemons, the log shows " + std::to_string(ledger.Count(Fleet::kKilled)));
    }
    for (const char* once : {"Deamon Thread started", "Deamon Thread is exiting..."}) {
        if (ledger.Count(once) != 1) {
            failures_.Add(std::string("the log does not show this line once: ") + once);
        }
    }
    bool counted = false;
    for (std::size_t count = registered.atLeast; count <= registered.atMost; ++count) {
        counted =
            counted || ledger.Count(std::to_string(count) + " Processes still registered") == 1;
    }
    if (!counted) {
        failures_.Add("the log does not show " + std::to_string(registered.atLeast) +
                      " registered daemons at the end");
    }
    if (ledger.LastText() != "Deamon Thread is exiting...") {
        failures_.Add("the last record of the log is: " + ledger.LastText());
    }
    if (ledger.Records() != followers_.Other().Records()) {
        failures_.Add("the two readers have read different numbers of records");
    }
}

} // namespace vqrx::test
