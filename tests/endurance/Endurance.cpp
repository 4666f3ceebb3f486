// Runs the real supervisor under a mixed load and holds it against a model: what has to run does,
// once; nothing else does; ids are never used twice; the log has every line once and loses none;
// the supervisor's memory, handles and threads do not grow, but for the one process handle that
// every restart keeps. Options: see Options.h.
#include "Chart.h"
#include "Clients.h"
#include "Fleet.h"
#include "LogFollower.h"
#include "LogLedger.h"
#include "Options.h"
#include "PrefixClass.h"
#include "Sampler.h"
#include "SupervisorProcess.h"
#include "TestService.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <thread>
#include <utility>

namespace vqrx::test {
namespace {

constexpr ULONGLONG kCheckMs = 10000;
constexpr ULONGLONG kDeadlineMs = 120000; // for whatever has to come about on two busy cores
// What may come and go with the calls under way, and with the threads that COM keeps for them.
constexpr long long kRestHandles = 12;
constexpr unsigned kRestThreads = 4;
constexpr long long kPeakHandles = 40;
constexpr unsigned kPeakThreads = 12;
constexpr std::size_t kPeakSamples = 10;
constexpr double kMiBPerThread = 1; // its stack
// A record in the supervisor's memory, of which it keeps the last 50000.
constexpr double kMiBPerRecord = 512.0 / 1048576;
constexpr double kMemoryMayDifferMiB = 4;
// Processor time for a second of the run: what killed clients had launched stays, and makes it
// more.
constexpr double kCpuMayGrowTimes = 4;
constexpr double kCpuAlwaysAllowed = 0.05;

using State = JournalDaemon::State;

/// Two readers that follow the log, each on a thread of its own, as readers do: with a pause.
class Followers {
public:
    explicit Followers(const std::string& path)
        : first_([this, path] { Follow(path, ledger_); })
        , second_([this, path] { Follow(path, other_); })
    {
    }
    Followers(const Followers&) = delete;
    Followers& operator=(const Followers&) = delete;
    ~Followers() { Stop(); }

    /// Reads what there is and ends.
    void Stop()
    {
        stop_ = true;
        for (std::thread* thread : {&first_, &second_}) {
            if (thread->joinable()) {
                thread->join();
            }
        }
    }
    const LogLedger& Ledger() const { return ledger_; }
    const LogLedger& Other() const { return other_; }
    std::string Failure() const
    {
        const std::lock_guard hold(mutex_);
        return failure_;
    }
    unsigned Wraps() const { return wraps_; }

private:
    void Follow(const std::string& path, LogLedger& ledger)
    {
        LogFollower follower(path);
        try {
            for (bool last = false; !last;) {
                last = stop_;
                ledger.Add(follower.Poll());
                wraps_ = follower.Wraps();
                Sleep(last ? 0 : 50);
            }
        } catch (const std::exception& exception) {
            const std::lock_guard hold(mutex_);
            failure_ = exception.what();
        }
    }

    LogLedger ledger_;
    LogLedger other_;
    std::atomic<bool> stop_ = false;
    std::atomic<unsigned> wraps_ = 0;
    mutable std::mutex mutex_;
    std::string failure_;
    std::thread first_;
    std::thread second_;
};

class EnduranceRun {
public:
    explicit EnduranceRun(const EnduranceOptions& options)
        : options_(options)
    {
        std::filesystem::create_directories(options.output);
        twice_.Reset(CreateEventA(nullptr, TRUE, FALSE, "dm_endurance_twice"));
        firewallService_.Start();
    }

    /// @return whether all was well
    bool Run()
    {
        StartUp();
        Load();
        const std::size_t registered = Settle();
        Finish(registered);
        Report();
        return failures_.empty();
    }

private:
    void Fail(const std::string& text)
    {
        failures_.push_back(text);
        std::cout << "FAILED: " << text << std::endl;
    }

    double Seconds() const { return static_cast<double>(GetTickCount64() - began_) / 1000; }

    void StartUp()
    {
        const ULONGLONG start = GetTickCount64();
        supervisor_.emplace();
        followers_.emplace(supervisor_->LogFile());
        fleet_.emplace(*supervisor_, options_.daemons);
        sampler_.emplace(supervisor_->Process().Pid());
        const auto names = fleet_->Running();
        const ULONGLONG deadline = GetTickCount64() + 600000;
        const auto runs = [](const std::string& name) { return HoldsName(name); };
        while (!std::all_of(names.begin(), names.end(), runs) && GetTickCount64() < deadline) {
            Sleep(100);
        }
        startUpSeconds_ = static_cast<double>(GetTickCount64() - start) / 1000;
        std::cout << names.size() << " of " << options_.daemons << " daemons run after "
                  << startUpSeconds_ << " s" << std::endl;
        began_ = GetTickCount64();
        TakeSample();
        clients_.emplace();
    }

    void Load()
    {
        began_ = GetTickCount64();
        const ULONGLONG end = began_ + options_.seconds * 1000ULL;
        unsigned checks = 0;
        while (GetTickCount64() < end && failures_.size() < 5) {
            const ULONGLONG next = std::min(end, GetTickCount64() + kCheckMs);
            if (++checks % 3 == 2) {
                clients_->KillOne();
            }
            const DWORD back = fleet_->KillOne(followers_->Ledger());
            if (back == 0) {
                Fail("a daemon that was killed did not come back");
            }
            slowestReturnMs_ = std::max(slowestReturnMs_, back);
            sumReturnMs_ += back;
            Check();
            TakeSample();
            const ULONGLONG now = GetTickCount64();
            if (now < next) {
                Sleep(static_cast<DWORD>(next - now));
            }
        }
    }

    // Whether everything runs that has to, and nothing that must not; in words what does not.
    std::string Differences() const
    {
        std::ostringstream text;
        for (const std::string& name : fleet_->Running()) {
            if (!HoldsName(name)) {
                text << name << " does not run; ";
            }
        }
        for (const auto& [name, daemon] : clients_->Daemons()) {
            const bool runs = HoldsName(name);
            if ((daemon.state == State::launched || daemon.state == State::attached) && !runs) {
                text << name << " does not run; ";
            }
            if ((daemon.state == State::stopped || daemon.state == State::detached) && runs) {
                text << name << " runs; ";
            }
        }
        for (const auto& [name, attempts] : fleet_->Attempts(followers_->Ledger())) {
            const auto before = attempts_.find(name);
            if (attempts <= (before == attempts_.end() ? 0 : before->second)) {
                text << name << " was not started again; ";
            }
        }
        return text.str();
    }

    void Check()
    {
        if (!supervisor_->Process().Running()) {
            Fail("the supervisor has ended: " + supervisor_->Process().Error());
            return;
        }
        const ULONGLONG start = GetTickCount64();
        std::string differences = Differences();
        while (!differences.empty() && GetTickCount64() - start < kDeadlineMs) {
            Sleep(100);
            differences = Differences();
        }
        if (!differences.empty()) {
            Fail(differences);
        }
        attempts_ = fleet_->Attempts(followers_->Ledger());
        if (WaitForSingleObject(twice_.Get(), 0) == WAIT_OBJECT_0) {
            Fail("a daemon ran twice");
        }
        if (!followers_->Failure().empty()) {
            Fail(followers_->Failure());
        }
        if (followers_->Ledger().Count("Overflowed message queue.") != 0) {
            Fail("the message queue has overflowed");
        }
        CheckIds();
    }

    void CheckIds()
    {
        std::map<DWORD, std::string> owners;
        const auto give = [&](DWORD id, const std::string& name) {
            const auto [owner, isNew] = owners.emplace(id, name);
            if (!isNew) {
                Fail("id " + std::to_string(id) + " was used twice: " + owner->second + " and " +
                     name);
            }
        };
        for (const auto& daemon : fleet_->Daemons()) {
            give(daemon.id, daemon.name);
        }
        for (const auto& [name, daemon] : clients_->Daemons()) {
            if (daemon.state != State::launching && daemon.state != State::attaching) {
                give(daemon.id, name); // of the others nobody was told the id
            }
        }
        for (const DWORD id : followers_->Ledger().IdsUsedTwice()) {
            Fail("by the log id " + std::to_string(id) + " was used twice");
        }
    }

    // The handles at a moment at which the log said the same before and after.
    void TakeSample()
    {
        const LogLedger& ledger = followers_->Ledger();
        const ULONGLONG start = GetTickCount64();
        Sample sample;
        for (;;) {
            const long long before = ledger.ProcessHandles();
            sample = sampler_->Take();
            Sleep(150); // longer than the followers' pause
            sample.expectedProcessHandles = ledger.ProcessHandles();
            if (before == sample.expectedProcessHandles && before == sample.handles.process) {
                break;
            }
            if (GetTickCount64() - start > kDeadlineMs) {
                Fail("process handles: " + std::to_string(sample.handles.process) +
                     " are open, by the log there are " +
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

    // Ends the clients and finds out what became of the calls that some of them were killed in.
    // @return how many daemons are registered
    std::size_t Settle()
    {
        if (const std::string failure = clients_->End(); !failure.empty()) {
            Fail(failure);
        }
        Check();
        std::vector<std::string> started;
        std::vector<std::string> ended;
        std::size_t registered = fleet_->Daemons().size();
        for (const auto& [name, daemon] : clients_->Daemons()) {
            switch (daemon.state) {
            case State::launched:
            case State::attached:
                ++registered;
                break;
            case State::launching: { // the same request tells
                const std::string program = EnduranceProgram(daemon.kind);
                supervisor_->Client().Launch(std::wstring(program.begin(), program.end()),
                                             {std::wstring(daemon.kind.begin(), daemon.kind.end()),
                                              std::wstring(name.begin(), name.end())});
                ++registered;
                started.push_back(name);
                break;
            }
            case State::stopping: // the call went on, or had not yet come
                supervisor_->Client().Stop(daemon.id);
                ended.push_back(name);
                break;
            case State::detaching:
                supervisor_->Client().Detach(daemon.id);
                break;
            case State::attaching:
                ++perhapsRegistered_;
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
            Fail("what clients were killed in has not come to its end");
        }
        TakeSample();
        return registered;
    }

    void Finish(std::size_t registered)
    {
        if (const DWORD code = supervisor_->Exit(); code != 0) {
            Fail("the supervisor ended with " + std::to_string(code));
        }
        followers_->Stop();
        CheckLines();
        CheckGrowth();
        const LogLedger& ledger = followers_->Ledger();
        bool said = false;
        for (std::size_t more = 0; more <= perhapsRegistered_; ++more) {
            said = said || ledger.Count(std::to_string(registered + more) +
                                        " Processes still registered") == 1;
        }
        if (!said) {
            Fail("the supervisor did not count " + std::to_string(registered) + " daemons");
        }
        if (ledger.LastText() != "Deamon Thread is exiting...") {
            Fail("the last line was " + ledger.LastText());
        }
        if (ledger.Records() != followers_->Other().Records()) {
            Fail("the two readers have read different numbers of records");
        }
    }

    void CheckLines()
    {
        const LogLedger& ledger = followers_->Ledger();
        for (const auto& daemon : fleet_->Daemons()) {
            const DaemonLines lines = ledger.Of(daemon.id);
            const bool launched = daemon.kind != "attached" && daemon.kind != "missing";
            if (lines.firstStarts != (launched ? 1U : 0U) ||
                lines.attaches != (daemon.kind == "attached" ? 1U : 0U) || lines.stops != 0) {
                Fail("the lines of " + daemon.name + " are not there once");
            }
        }
        for (const auto& [name, daemon] : clients_->Daemons()) {
            const DaemonLines lines = ledger.Of(daemon.id);
            const bool launched = daemon.state <= State::stopped && daemon.kind != "";
            if ((daemon.state == State::launched && lines.firstStarts != 1) ||
                (daemon.state == State::stopped && lines.stops != lines.firstStarts) ||
                (daemon.state == State::attached && lines.attaches != 1) ||
                (daemon.state == State::detached && (lines.attaches != 1 || lines.detaches != 1)) ||
                (launched && lines.firstStarts > 1)) {
                Fail("the lines of " + name + " are not there once");
            }
        }
        if (ledger.Count(Fleet::kKilled) != fleet_->Killed()) {
            Fail(std::to_string(fleet_->Killed()) + " daemons were killed, the log tells of " +
                 std::to_string(ledger.Count(Fleet::kKilled)));
        }
        for (const char* once : {"Deamon Thread started", "Deamon Thread is exiting..."}) {
            if (ledger.Count(once) != 1) {
                Fail(std::string("not there once: ") + once);
            }
        }
    }

    // Before the clients came and after they have gone, the same daemons being there; and, once the
    // run is long enough to tell, the peaks of its last third against those of its first.
    void CheckGrowth()
    {
        const std::size_t count = samples_.size();
        Compare("at rest", {samples_.front()}, {samples_.back()}, kRestHandles, kRestThreads);
        if (const std::size_t third = count / 3; third >= kPeakSamples) {
            const auto begin = samples_.begin();
            const auto length = static_cast<std::ptrdiff_t>(third);
            Compare("under load", {begin, begin + length},
                    {samples_.end() - length, samples_.end()}, kPeakHandles, kPeakThreads);
            const double early = CpuShare(samples_.front(), samples_.at(third - 1));
            const double late = CpuShare(samples_.at(count - third), samples_.back());
            if (late > std::max(kCpuAlwaysAllowed, early * kCpuMayGrowTimes)) {
                Fail("processor time has grown from " + std::to_string(early) + " to " +
                     std::to_string(late) + " s a second");
            }
        }
    }

    static double CpuShare(const Sample& from, const Sample& to)
    {
        return (to.cpuSeconds - from.cpuSeconds) / std::max(1.0, to.seconds - from.seconds);
    }

    void Compare(const std::string& when, const std::vector<Sample>& early,
                 const std::vector<Sample>& late, long long handles, unsigned threads)
    {
        Sample before;
        Sample after;
        for (const auto& [group, peak] : {std::pair{&early, &before}, std::pair{&late, &after}}) {
            for (const Sample& sample : *group) {
                peak->handles.other = std::max(peak->handles.other, sample.handles.other);
                peak->threads = std::max(peak->threads, sample.threads);
                peak->privateMiB = std::max(peak->privateMiB, sample.privateMiB);
                peak->records = std::max(peak->records, sample.records);
            }
        }
        if (after.handles.other > before.handles.other + handles) {
            Fail("handles other than of processes have grown " + when);
        }
        if (after.threads > before.threads + threads) {
            Fail("threads have grown " + when);
        }
        const auto kept = [](std::size_t records) {
            return static_cast<double>(std::min<std::size_t>(records, 50000)) * kMiBPerRecord;
        };
        const double stacks =
            after.threads > before.threads ? kMiBPerThread * (after.threads - before.threads) : 0.0;
        if (after.privateMiB > before.privateMiB + stacks + kept(after.records) -
                                   kept(before.records) + kMemoryMayDifferMiB) {
            Fail("memory has grown " + when);
        }
    }

    void Report()
    {
        WriteChart(options_.output + "/samples.svg", samples_);
        const Sample& first = samples_.front();
        const Sample& last = samples_.back();
        std::ostringstream text;
        text << "load                    " << last.seconds << " s, after " << startUpSeconds_
             << " s of start-up\n"
             << "daemons                 " << options_.daemons << ", and those of "
             << Clients::kCount << " clients: " << clients_->Daemons().size() << '\n'
             << "clients killed          " << clients_->Killed() << ", " << clients_->KilledInCall()
             << " of them in a call\n"
             << "daemons killed          " << fleet_->Killed() << ", back after "
             << sumReturnMs_ / std::max(1U, fleet_->Killed()) << " ms on average, "
             << slowestReturnMs_ << " ms at most\n"
             << "restarts                " << last.restarts << '\n'
             << "log records             " << last.records << ", " << followers_->Wraps()
             << " wraps of the ring\n"
             << "process handles         " << first.handles.process << " -> "
             << last.handles.process << ", as many as the log explains\n"
             << "other handles           " << first.handles.other << " -> " << last.handles.other
             << '\n'
             << "threads                 " << first.threads << " -> " << last.threads << '\n'
             << "private memory, MiB     " << first.privateMiB << " -> " << last.privateMiB << '\n'
             << "processor time, s       " << last.cpuSeconds - first.cpuSeconds << '\n'
             << "failures                " << failures_.size() << '\n';
        for (const std::string& failure : failures_) {
            text << "  " << failure << '\n';
        }
        std::ofstream(options_.output + "/report.txt", std::ios::binary) << text.str();
        std::cout << text.str() << std::flush;
    }

    EnduranceOptions options_;
    system::com::v1::ComApartment apartment_;
    TestService firewallService_{"MpsSvc"};
    PrefixStandIns standIns_;
    system::win32::v1::UniqueKernelHandle twice_;
    std::optional<SupervisorProcess> supervisor_;
    std::optional<Followers> followers_;
    std::optional<Fleet> fleet_;
    std::optional<Sampler> sampler_;
    std::optional<Clients> clients_;
    std::vector<Sample> samples_;
    std::map<std::string, std::size_t> attempts_; // at the last check
    std::vector<std::string> failures_;
    ULONGLONG began_ = 0;
    double startUpSeconds_ = 0;
    DWORD slowestReturnMs_ = 0;
    DWORD sumReturnMs_ = 0;
    std::size_t perhapsRegistered_ = 0;
};

} // namespace
} // namespace vqrx::test

int main(int argc, char** argv)
{
    try {
        vqrx::test::EnduranceRun run(vqrx::test::ReadOptions(argc, argv));
        return run.Run() ? 0 : 1;
    } catch (const std::exception& exception) {
        std::cout << "endurance: " << exception.what() << std::endl;
        return 1;
    }
}
