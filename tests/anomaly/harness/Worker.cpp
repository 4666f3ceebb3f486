#include "Worker.h"

#include "Allocations.h"
#include "CallKinds.h"
#include "CallList.h"
#include "CallPath.h"
#include "LastWords.h"
#include "Ledger.h"
#include "StartedThings.h"
#include "SymbolNames.h"

#include <algorithm>
#include <fstream>
#include <set>

namespace vqrx::test::anomaly {
namespace {

constexpr int kUndisturbedRuns = 4;
constexpr int kUndisturbedRunsOfSample = 2;
constexpr std::size_t kRepetitions = 5; // of the only call to try

constexpr const char* kFolder = "DM_ANOMALY_FOLDER";
constexpr const char* kSeed = "DM_ANOMALY_SEED";
constexpr const char* kSeconds = "DM_ANOMALY_SECONDS";
constexpr const char* kDeadline = "DM_ANOMALY_DEADLINE";
constexpr const char* kCallsOfPath = "DM_ANOMALY_CALLS_OF_PATH";
constexpr const char* kFirst = "DM_ANOMALY_FIRST";
constexpr const char* kOnly = "DM_ANOMALY_ONLY";

std::string Variable(const char* name)
{
    char text[1024] = {};
    GetEnvironmentVariableA(name, text, sizeof text);
    return text;
}

std::uint64_t Number(const std::string& text)
{
    return text.empty() ? 0 : std::stoull(text);
}

// What a run left behind for the judgement.
struct Outcome {
    const CallPath* failed = nullptr;
    std::set<std::string> seen;
    std::vector<std::string> broken;
    std::map<Leftover, int> leftovers;
};

bool IsMemory(std::string_view name)
{
    return name == kOperatorNew || name == "malloc" || name == "calloc" || name == "realloc" ||
           name == "_aligned_malloc" || name == "_strdup";
}

bool LeadsThrough(const CallPath& path, const QuietPlace& place)
{
    return (*place.call == '\0' || std::string_view(path.name) == place.call) &&
           std::any_of(path.frames, path.frames + path.depth,
                       [&](std::uint32_t frame) { return NameAt(frame).ends_with(place.place); });
}

bool MayBeQuiet(const CallPath& path)
{
    const CallKind* const kind = KindOf(path.name);
    return IsMemory(path.name) || (kind != nullptr && kind->quiet != nullptr) ||
           std::ranges::any_of(QuietPlaces(),
                               [&](const QuietPlace& place) { return LeadsThrough(path, place); });
}

std::string TextOfLeftover(const Leftover& leftover, int count)
{
    return std::to_string(count) + " x " + NameOf(leftover.resource) + " not given back, from " +
           leftover.path->name + "\n" + NamesOf(leftover.path->frames, leftover.path->depth);
}

class Runs {
public:
    Runs(const Work& work, const MakeScenario& make)
        : work_(work)
        , make_(make)
        , results_(work.ResultFile(), std::ios::app)
        , lastWords_([this](const std::string& text) { Report("died", text); })
    {
    }

    void DoAll()
    {
        if (!RunUndisturbed()) {
            return;
        }
        const ULONGLONG start = GetTickCount64();
        CallList calls = CallList::Read(work_.CallFile());
        if (calls.IsEmpty()) {
            calls = taken_;
            calls.Write(work_.CallFile());
        }
        std::vector<CallPoint> points = calls.Points(work_.seed, work_.callsOfPath);
        const std::size_t all = points.size();
        if (work_.only.path != 0) {
            points.assign(kRepetitions, work_.only);
        }
        for (std::size_t index = work_.first; index < points.size(); ++index) {
            if (work_.seconds != 0 && work_.only.path == 0 &&
                GetTickCount64() - start > 1000ULL * work_.seconds) {
                break;
            }
            Report("run", std::to_string(index));
            Try(points[index]);
        }
        Report("end", std::to_string(all));
    }

private:
    void Report(const std::string& word, std::string text = {})
    {
        std::replace(text.begin(), text.end(), '\n', '\t');
        results_ << word << ' ' << text << std::endl;
    }

    Outcome RunOnce(const CallPoint* fail)
    {
        RunNotes notes;
        lastWords_.BeginDeadline(work_.deadlineMs, [&notes] { return notes.Step(); });
        BeginRun(fail);
        {
            const std::unique_ptr<Scenario> scenario = make_(notes);
            scenario->Run();
            StopCounting();
            scenario->Verify();
            CountAgain();
            notes.Begin("the end of the scenario");
            scenario->Finish();
            if (!AllThreadsHaveEnded()) { // it uses what is destroyed: no run after this counts
                lastWords_.End(
                    "has a thread that runs on after the owner of the thread is destroyed");
            }
        }
        EndRun();
        lastWords_.EndDeadline();
        for (const std::string& name : UnexpectedCalls()) {
            notes.Broke("the product calls " + name + ", which TestCalls.cpp names");
        }
        return {FailedCall(), notes.Seen(), notes.Broken(), Leftovers()};
    }

    bool RunUndisturbed()
    {
        const int runs = work_.seconds == 0 ? kUndisturbedRuns : kUndisturbedRunsOfSample;
        for (int run = 0; run < runs; ++run) {
            Report("run", "-1");
            const Outcome outcome = RunOnce(nullptr);
            for (const std::string& text : outcome.broken) {
                Report("broken", "without a failed call: " + text);
            }
            if (!outcome.broken.empty()) {
                return false;
            }
            if (run == 0) {
                continue; // the first run makes what stays for the life of the process
            }
            usual_.insert(outcome.seen.begin(), outcome.seen.end());
            for (const auto& [leftover, count] : outcome.leftovers) {
                usualLeftovers_[leftover] = std::max(usualLeftovers_[leftover], count);
            }
            NoteTakenPaths();
        }
        return true;
    }

    void NoteTakenPaths()
    {
        taken_.AddTakenPaths();
        for (const CallPath* const path : TakenPaths()) {
            if (path->failedAnyway == path->calls) {
                failAnyway_.insert(path);
            } else {
                failAnyway_.erase(path);
            }
        }
    }

    std::vector<Leftover> NewLeftovers(const Outcome& outcome) const
    {
        std::vector<Leftover> found;
        for (const auto& [leftover, count] : outcome.leftovers) {
            const auto usual = usualLeftovers_.find(leftover);
            if (leftover.resource == Resource::kProcess) {
                continue; // the manager keeps the handle of each process that it has replaced
            }
            if (count > (usual == usualLeftovers_.end() ? 0 : usual->second)) {
                found.push_back(leftover);
            }
        }
        return found;
    }

    bool LeavesTrace(const Outcome& outcome) const
    {
        return MayBeQuiet(*outcome.failed) || failAnyway_.contains(outcome.failed) ||
               !std::includes(usual_.begin(), usual_.end(), outcome.seen.begin(),
                              outcome.seen.end()) ||
               outcome.seen.size() < usual_.size();
    }

    void Try(const CallPoint& point)
    {
        const Outcome outcome = RunOnce(&point);
        if (outcome.failed == nullptr) {
            Report(outcome.broken.empty() ? "missed" : "broken",
                   outcome.broken.empty() ? "" : "without a failed call: " + outcome.broken[0]);
            return;
        }
        std::vector<std::string> broken = outcome.broken;
        if (!NewLeftovers(outcome).empty()) {
            // The failure may have led to something for the first time that stays for the life of
            // the process. A leak shows again.
            const Outcome second = RunOnce(&point);
            for (const Leftover& leftover : NewLeftovers(second)) {
                broken.push_back(TextOfLeftover(leftover, second.leftovers.at(leftover)));
            }
        }
        if (broken.empty() && !LeavesTrace(outcome)) {
            broken.emplace_back("the failure is neither in the log nor in a result");
        }
        for (const std::string& text : broken) {
            Report("broken", text);
        }
        if (broken.empty()) {
            Report("ok");
        }
    }

    const Work& work_;
    const MakeScenario& make_;
    std::ofstream results_;
    LastWords lastWords_;
    CallList taken_;
    std::set<std::string> usual_;
    std::set<const CallPath*> failAnyway_; // paths whose calls fail without help
    std::map<Leftover, int> usualLeftovers_;
};

} // namespace

Work Work::FromEnvironment()
{
    Work work;
    work.folder = Variable(kFolder);
    work.seed = static_cast<std::uint32_t>(Number(Variable(kSeed)));
    work.seconds = static_cast<std::uint32_t>(Number(Variable(kSeconds)));
    work.deadlineMs = static_cast<std::uint32_t>(Number(Variable(kDeadline)));
    work.callsOfPath = static_cast<std::uint32_t>(Number(Variable(kCallsOfPath)));
    work.first = Number(Variable(kFirst));
    const std::string point = Variable(kOnly); // PATH:OCCURRENCE
    const std::size_t colon = point.find(':');
    if (colon != std::string::npos) {
        work.only.path = Number(point.substr(0, colon));
        work.only.occurrence = static_cast<std::uint32_t>(Number(point.substr(colon + 1)));
    }
    return work;
}

void Work::Set() const
{
    SetEnvironmentVariableA(kFolder, folder.c_str());
    SetEnvironmentVariableA(kSeed, std::to_string(seed).c_str());
    SetEnvironmentVariableA(kSeconds, std::to_string(seconds).c_str());
    SetEnvironmentVariableA(kDeadline, std::to_string(deadlineMs).c_str());
    SetEnvironmentVariableA(kCallsOfPath, std::to_string(callsOfPath).c_str());
    SetEnvironmentVariableA(kFirst, std::to_string(first).c_str());
}

void Work::Unset()
{
    SetEnvironmentVariableA(kFolder, nullptr);
    SetEnvironmentVariableA(kFirst, nullptr);
}

void DoWork(const Work& work, const MakeScenario& make)
{
    const OfTheTest mark;
    UseCountedAllocations();
    InstallThunks();
    Runs(work, make).DoAll();
}

} // namespace vqrx::test::anomaly
