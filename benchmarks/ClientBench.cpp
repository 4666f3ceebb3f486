// What one look of the client costs, without the questions to Windows about each process: the ring
// file is read, its records become a timeline, the timeline becomes a screen of ps --watch that is
// compared with the look before, metrics or a page.
#include "DaemonStatus.h"
#include "LogFile.h"
#include "LogLevel.h"
#include "Measure.h"
#include "MetricsText.h"
#include "ReportHtml.h"
#include "ReportModel.h"
#include "StatusTable.h"
#include "TimelineBuilder.h"
#include "WatchScreen.h"
#include "log_perf/ring/LogFileSink.h"
#include "log_perf/time/Clock.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::bench {
namespace {

using namespace client::v0;
using log::i_logger::v0::kLevelInformation;
using log::i_logger::v0::kLevelWarning;
using log::log_perf::v2::LogFileSink;
using log::log_perf::v2::Timestamp;

constexpr std::uint32_t kRingSize = 0x100000;
constexpr std::int64_t kBegin = 1795236736; // seconds since 1970
constexpr const char* kImage = "C:\\FW\\App\\w.exe";

void WriteLog(const std::string& name, int records, int daemons)
{
    LogFileSink sink;
    sink.SetFileName(name);
    sink.SetSizeLimit(kRingSize);
    for (int record = 0; record < records; ++record) {
        Timestamp time{};
        time.time = kBegin + record;
        const int id = record % daemons;
        const std::string text = "Start DaemonId(" + std::to_string(id) + ") PId(" +
                                 std::to_string(10000 + record) + ") : " + kImage + " " +
                                 std::to_string(id) + " ";
        sink.Write(record < daemons ? kLevelInformation : kLevelWarning, &time, text.c_str());
    }
}

ProcessSource MachineWhereAllRun(int records, int daemons)
{
    ProcessSource source;
    source.facts = [=](std::uint32_t processId) {
        ProcessFacts facts;
        const int record = static_cast<int>(processId) - 10000;
        facts.processId = processId;
        if (record >= records - daemons) {
            facts.state = ProcessFacts::State::kRunning;
            facts.image = kImage;
            facts.createdMs = (kBegin + record) * 1000;
        }
        return facts;
    };
    source.sameFile = [](const std::string&, const std::string&) { return false; };
    source.commandOfService = [](const std::string&) { return std::string(); };
    source.arguments = [](std::uint32_t) { return std::vector<std::string>(); };
    source.appFolder = "C:\\FW\\App";
    return source;
}

template <typename Work>
void Time(const std::string& name, const Work& work)
{
    work();
    const Stopwatch watch;
    work();
    Report(name, watch.Seconds() * 1000);
}

// Measures a log in which each of the daemons has been started `restarts` times.
void Look(const std::string& file, int daemons, int starts, const std::string& suffix)
{
    const int records = daemons * starts;
    WriteLog(file, records, daemons);
    const ProcessSource source = MachineWhereAllRun(records, daemons);
    const std::int64_t nowMs = (kBegin + records + 60) * 1000;
    const TimeWriter timeText = [](std::int64_t timeMs) { return std::to_string(timeMs); };
    const auto statusNow = [&] {
        const Timeline timeline = BuildTimeline(ReadLogFile(file));
        return StatusOfDaemons(timeline.runs.back(), source, nowMs, {});
    };
    const ScreenSize screen{200, static_cast<std::size_t>(daemons) + 25};
    const WatchLook before{nowMs - 2000, {}, {}, statusNow(), {}};
    Time("client.refresh_ms." + suffix, [&] {
        const WatchLook now{nowMs, {}, {}, statusNow(), {}};
        Keep(ComposeScreen(&before, now, screen, 2, timeText));
    });
    Time("client.metrics_ms." + suffix, [&] {
        MachineMetrics machine;
        machine.nowMs = nowMs;
        machine.supervisorUp = machine.logReadable = true;
        Keep(MetricsText(machine, statusNow()));
    });
    Time("client.report_ms." + suffix, [&] {
        const ReportModel model = MakeReportModel(BuildTimeline(ReadLogFile(file)));
        Keep(ReportHtml(model, file, 0));
    });
}

} // namespace

void ClientBench(const Settings& settings)
{
    const std::string folder = settings.scratch + "\\client_";
    Look(folder + "10.log", 10, 1, "10");
    Look(folder + "1000.log", 1000, 1, "1000");
    if (!settings.quick) {
        Look(folder + "10000.log", 10000, 1, "10000");
        // 10 daemons that were restarted until the ring was full.
        Look(folder + "full.log", 10, 1050, "full_ring");
    }
}

} // namespace vqrx::bench
