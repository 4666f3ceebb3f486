#include "Growth.h"

#include <algorithm>
#include <string>
#include <utility>

namespace vqrx::test {
namespace {

// Handles and threads that calls under way and COM may use at one moment and not at another.
constexpr long long kRestHandles = 12;
constexpr unsigned kRestThreads = 4;
constexpr long long kPeakHandles = 40;
constexpr unsigned kPeakThreads = 12;
constexpr std::size_t kPeakSamples = 10; // least number of samples in a third of the run
constexpr double kMiBPerThread = 1;      // stack of a thread
// Memory of one record in the supervisor. The supervisor keeps the last 50000 records.
constexpr double kMiBPerRecord = 512.0 / 1048576;
constexpr std::size_t kKeptRecords = 50000;
constexpr double kMemoryMayDifferMiB = 4;
// Processor time per second of the run. It grows, because daemons that killed clients had launched
// keep running.
constexpr double kCpuMayGrowTimes = 4;
constexpr double kCpuAlwaysAllowed = 0.05;

double CpuShare(const Sample& from, const Sample& to)
{
    return (to.cpuSeconds - from.cpuSeconds) / std::max(1.0, to.seconds - from.seconds);
}

Sample Peaks(const std::vector<Sample>& samples)
{
    Sample peak;
    for (const Sample& sample : samples) {
        peak.handles.other = std::max(peak.handles.other, sample.handles.other);
        peak.threads = std::max(peak.threads, sample.threads);
        peak.privateMiB = std::max(peak.privateMiB, sample.privateMiB);
        peak.records = std::max(peak.records, sample.records);
    }
    return peak;
}

double MiBOfRecords(std::size_t records)
{
    return static_cast<double>(std::min(records, kKeptRecords)) * kMiBPerRecord;
}

// @param handles, threads  how many more may be there late than early
void Compare(const std::string& when, const Sample& early, const Sample& late, long long handles,
             unsigned threads, Failures& failures)
{
    if (late.handles.other > early.handles.other + handles) {
        failures.Add("handles that are not of processes have grown " + when);
    }
    if (late.threads > early.threads + threads) {
        failures.Add("threads have grown " + when);
    }
    const double stacks =
        late.threads > early.threads ? kMiBPerThread * (late.threads - early.threads) : 0.0;
    if (late.privateMiB > early.privateMiB + stacks + MiBOfRecords(late.records) -
                              MiBOfRecords(early.records) + kMemoryMayDifferMiB) {
        failures.Add("memory has grown " + when);
    }
}

} // namespace

void CheckGrowth(const std::vector<Sample>& samples, Failures& failures)
{
    const std::size_t count = samples.size();
    Compare("at rest", Peaks({samples.front()}), Peaks({samples.back()}), kRestHandles,
            kRestThreads, failures);
    const std::size_t third = count / 3;
    if (third < kPeakSamples) {
        return;
    }
    const auto length = static_cast<std::ptrdiff_t>(third);
    Compare("under load", Peaks({samples.begin(), samples.begin() + length}),
            Peaks({samples.end() - length, samples.end()}), kPeakHandles, kPeakThreads, failures);
    const double early = CpuShare(samples.front(), samples.at(third - 1));
    const double late = CpuShare(samples.at(count - third), samples.back());
    if (late > std::max(kCpuAlwaysAllowed, early * kCpuMayGrowTimes)) {
        failures.Add("processor time per second of the run has grown from " +
                     std::to_string(early) + " s to " + std::to_string(late) + " s");
    }
}

} // namespace vqrx::test
