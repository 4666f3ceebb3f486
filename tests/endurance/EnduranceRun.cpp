#include "EnduranceRun.h"

#include "Chart.h"
#include "Growth.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

namespace vqrx::test {
namespace {

constexpr const char* kRanTwiceEvent = "dm_endurance_twice"; // known to endurance_daemon.h
constexpr ULONGLONG kCheckMs = 10000;
constexpr ULONGLONG kStartUpMs = 600000;
// The load ends after this number of failures.
constexpr std::size_t kMaxFailures = 5;

} // namespace

EnduranceRun::EnduranceRun(const EnduranceOptions& options)
    : options_(options)
    , ranTwice_(CreateEventA(nullptr, TRUE, FALSE, kRanTwiceEvent))
{
    std::filesystem::create_directories(options.output);
    firewallService_.Start();
}

bool EnduranceRun::Run()
{
    StartUp();
    Load();
    const Model::Registered registered = model_->Settle();
    TakeSample();
    Finish(registered);
    Report();
    return failures_.All().empty();
}

double EnduranceRun::Seconds() const
{
    return static_cast<double>(GetTickCount64() - began_) / 1000;
}

void EnduranceRun::StartUp()
{
    const ULONGLONG start = GetTickCount64();
    supervisor_.emplace();
    followers_.emplace(supervisor_->LogFile());
    fleet_.emplace(*supervisor_, options_.daemons);
    sampler_.emplace(supervisor_->Process().Pid());
    const auto names = fleet_->Running();
    const ULONGLONG deadline = GetTickCount64() + kStartUpMs;
    while (!std::all_of(names.begin(), names.end(), HoldsName) && GetTickCount64() < deadline) {
        Sleep(100);
    }
    startUpSeconds_ = static_cast<double>(GetTickCount64() - start) / 1000;
    std::cout << names.size() << " of " << options_.daemons << " daemons run after "
              << startUpSeconds_ << " s" << std::endl;
    began_ = GetTickCount64();
    TakeSample();
    clients_.emplace();
    model_.emplace(*supervisor_, *fleet_, *clients_, *followers_, ranTwice_.Get(), failures_);
}

void EnduranceRun::Load()
{
    began_ = GetTickCount64();
    const ULONGLONG end = began_ + options_.seconds * 1000ULL;
    unsigned checks = 0;
    while (GetTickCount64() < end && failures_.All().size() < kMaxFailures) {
        const ULONGLONG next = std::min(end, GetTickCount64() + kCheckMs);
        if (++checks % 3 == 2) {
            clients_->KillOne();
        }
        KillDaemon();
        model_->Check();
        TakeSample();
        const ULONGLONG now = GetTickCount64();
        if (now < next) {
            Sleep(static_cast<DWORD>(next - now));
        }
    }
}

void EnduranceRun::KillDaemon()
{
    const DWORD restartMs = fleet_->KillOne(followers_->Ledger());
    if (restartMs == 0) {
        failures_.Add("a killed daemon was not started again");
    }
    slowestRestartMs_ = std::max(slowestRestartMs_, restartMs);
    sumOfRestartMs_ += restartMs;
}

// Measures until the open process handles equal the number that the log explains, and the log did
// not change during the measurement.
void EnduranceRun::TakeSample()
{
    const LogLedger& ledger = followers_->Ledger();
    const ULONGLONG start = GetTickCount64();
    Sample sample;
    for (;;) {
        const long long before = ledger.ProcessHandles();
        sample = sampler_->Take();
        Sleep(3 * Followers::kPauseMs); // The followers read the log at least once in this time.
        sample.expectedProcessHandles = ledger.ProcessHandles();
        if (before == sample.expectedProcessHandles && before == sample.handles.process) {
            break;
        }
        if (GetTickCount64() - start > Model::kDeadlineMs) {
            failures_.Add("process handles: the supervisor has " +
                          std::to_string(sample.handles.process) + " open, the log explains " +
                          std::to_string(sample.expectedProcessHandles));
            break;
        }
    }
    sample.seconds = Seconds();
    sample.restarts = ledger.Restarts();
    sample.records = ledger.Records();
    samples_.push_back(sample);
    WriteCsv(options_.output + "/samples.csv", samples_);
}

void EnduranceRun::Finish(const Model::Registered& registered)
{
    if (const DWORD code = supervisor_->Exit(); code != 0) {
        failures_.Add("the supervisor ended with exit code " + std::to_string(code));
    }
    followers_->Stop();
    model_->CheckLog(registered);
    CheckGrowth(samples_, failures_);
}

void EnduranceRun::Report() const
{
    WriteChart(options_.output + "/samples.svg", samples_);
    const Sample& first = samples_.front();
    const Sample& last = samples_.back();
    std::ostringstream text;
    text << "load                    " << last.seconds << " s, after " << startUpSeconds_
         << " s of start-up\n"
         << "daemons                 " << options_.daemons << ", and " << clients_->Daemons().size()
         << " daemons of " << Clients::kCount << " clients\n"
         << "clients killed          " << clients_->Killed() << ", " << clients_->KilledInCall()
         << " of them in a call\n"
         << "daemons killed          " << fleet_->Killed() << ", started again after "
         << sumOfRestartMs_ / std::max(1U, fleet_->Killed()) << " ms on average, "
         << slowestRestartMs_ << " ms at most\n"
         << "restarts                " << last.restarts << '\n'
         << "log records             " << last.records << ", " << followers_->Wraps()
         << " wraps of the ring\n"
         << "process handles         " << first.handles.process << " -> " << last.handles.process
         << ", as many as the log explains\n"
         << "other handles           " << first.handles.other << " -> " << last.handles.other
         << '\n'
         << "threads                 " << first.threads << " -> " << last.threads << '\n'
         << "private memory, MiB     " << first.privateMiB << " -> " << last.privateMiB << '\n'
         << "processor time, s       " << last.cpuSeconds - first.cpuSeconds << '\n'
         << "failures                " << failures_.All().size() << '\n';
    for (const std::string& failure : failures_.All()) {
        text << "  " << failure << '\n';
    }
    std::ofstream(options_.output + "/report.txt", std::ios::binary) << text.str();
    std::cout << text.str() << std::flush;
}

} // namespace vqrx::test
