#include "MetricsText.h"

#include "ExitReason.h"
#include "MetricsWriter.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

void AddMachine(MetricsWriter& metrics, const MachineMetrics& machine)
{
    metrics.Add("daemonmanager_build_info", "Version of daemonctl.", 1,
                "version=\"" + MetricLabel(machine.version) + "\"");
    metrics.Add("daemonmanager_written_time_seconds", "When these metrics were written.",
                SecondsOf(machine.nowMs));
    metrics.Add("daemonmanager_up", "1 if the supervisor answers.", machine.supervisorUp ? 1 : 0);
    if (machine.supervisor) {
        metrics.Add("daemonmanager_process_start_time_seconds",
                    "Start of the supervisor's process.", SecondsOf(machine.supervisor->createdMs));
        metrics.Add("daemonmanager_process_cpu_seconds",
                    "Processor time of the supervisor's process.",
                    SecondsOf(machine.supervisor->cpuMs));
        metrics.Add("daemonmanager_process_resident_memory_bytes",
                    "Working set of the supervisor's process.",
                    static_cast<double>(machine.supervisor->memoryBytes));
    }
    metrics.Add("daemonmanager_log_readable",
                "1 if the log can be read and shows the supervisor that is up.",
                machine.logReadable ? 1 : 0);
    if (!machine.logReadable) {
        return;
    }
    metrics.Add("daemonmanager_log_damaged",
                "1 if parts of the log cannot be read, or a damaged log was set aside.",
                machine.logDamaged ? 1 : 0);
    metrics.Add("daemonmanager_log_records_missing",
                "Records that are missing between those in the log.",
                static_cast<double>(machine.recordsMissing));
    metrics.Add("daemonmanager_log_queue_overflows",
                "How often the supervisor could not log fast enough, as far as the log shows.",
                static_cast<double>(machine.queueOverflows));
    if (machine.latePasses) {
        metrics.Add(
            "daemonmanager_late_passes",
            "Passes that came more than 2 s after the one before, as far as failed starts show.",
            static_cast<double>(*machine.latePasses));
    }
}

void AddCounts(MetricsWriter& metrics, const std::vector<DaemonStatus>& daemons)
{
    const auto count = [&daemons](const auto& predicate) {
        return static_cast<double>(std::count_if(daemons.begin(), daemons.end(), predicate));
    };
    metrics.Add("daemonmanager_daemons", "Daemons of the supervisor.",
                static_cast<double>(daemons.size()));
    metrics.Add(
        "daemonmanager_daemons_running", "Daemons that run and are in no crash loop.",
        count([](const DaemonStatus& daemon) { return daemon.state == RunState::kRunning; }));
    metrics.Add(
        "daemonmanager_daemons_crash_loop", "Daemons in a crash loop.",
        count([](const DaemonStatus& daemon) { return daemon.state == RunState::kRestarting; }));
    metrics.Add(
        "daemonmanager_daemons_cannot_start", "Daemons that cannot be started.",
        count([](const DaemonStatus& daemon) { return daemon.state == RunState::kCannotStart; }));
}

std::optional<double> If(bool condition, double value)
{
    return condition ? std::optional(value) : std::nullopt;
}

void AddDaemonFamilies(MetricsWriter& metrics)
{
    metrics.AddForDaemons("daemonmanager_daemon_up", "1 if the daemon has a process.",
                          [](const DaemonStatus& daemon) {
                              return If(daemon.state != RunState::kUnknown,
                                        daemon.Runs() ? 1.0 : 0.0);
                          });
    metrics.AddForDaemons("daemonmanager_daemon_crash_loop",
                          "1 if the daemon was restarted at least 5 times in 10 minutes.",
                          [](const DaemonStatus& daemon) {
                              return daemon.state == RunState::kRestarting ? 1.0 : 0.0;
                          });
    metrics.AddForDaemons("daemonmanager_daemon_start_time_seconds",
                          "Start of the daemon's present process.", [](const DaemonStatus& daemon) {
                              return If(daemon.Runs(), SecondsOf(daemon.process.createdMs));
                          });
    metrics.AddForDaemons("daemonmanager_daemon_restarts", "Restarts that the log still shows.",
                          [](const DaemonStatus& daemon) {
                              return If(daemon.inLog, static_cast<double>(daemon.restarts));
                          });
    metrics.AddForDaemons("daemonmanager_daemon_restarts_last_hour",
                          "Restarts in the last 60 minutes.", [](const DaemonStatus& daemon) {
                              return If(daemon.inLog, static_cast<double>(daemon.recent.lastHour));
                          });
    metrics.AddLastExits("daemonmanager_daemon_last_exit_time_seconds",
                         "When a process of the daemon last ended by itself, and why.");
    metrics.AddForDaemons("daemonmanager_daemon_last_exit_code",
                          "Exit code of the process that last ended.",
                          [](const DaemonStatus& daemon) -> std::optional<double> {
                              const auto code = daemon.lastExit
                                                    ? ExitCodeOfReason(daemon.lastExit->reason)
                                                    : std::nullopt;
                              return code ? std::optional<double>(*code) : std::nullopt;
                          });
    metrics.AddForDaemons("daemonmanager_daemon_cpu_seconds",
                          "Processor time of the daemon's present process.",
                          [](const DaemonStatus& daemon) {
                              return If(daemon.Runs(), SecondsOf(daemon.process.cpuMs));
                          });
    metrics.AddForDaemons(
        "daemonmanager_daemon_memory_bytes", "Working set of the daemon's present process.",
        [](const DaemonStatus& daemon) {
            return If(daemon.Runs(), static_cast<double>(daemon.process.memoryBytes));
        });
}

// Adds the late passes between failed starts of one daemon. `late` stays empty if no pass is seen.
void AddLateIn(const std::vector<std::int64_t>& failedStarts, std::optional<std::uint64_t>& late)
{
    constexpr std::int64_t lateMs = 2000;
    for (std::size_t index = 1; index < failedStarts.size(); ++index) {
        const std::int64_t gapMs = failedStarts[index] - failedStarts[index - 1];
        // After a longer gap, a client stopped the daemon and launched the program again.
        if (gapMs <= kTriedLatelyMs) {
            late = late.value_or(0) + (gapMs > lateMs ? 1 : 0);
        }
    }
}

} // namespace

std::string MetricsText(const MachineMetrics& machine, const std::vector<DaemonStatus>& daemons)
{
    MetricsWriter metrics(daemons);
    AddMachine(metrics, machine);
    if (machine.supervisorUp && machine.logReadable) {
        AddCounts(metrics, daemons);
        AddDaemonFamilies(metrics);
    }
    return metrics.Finish();
}

std::optional<std::uint64_t> CountLatePasses(const SupervisorRun& run)
{
    std::optional<std::uint64_t> late;
    for (const auto& [command, failedStarts] : run.neverStarted) {
        AddLateIn(failedStarts, late);
    }
    for (const auto& [id, daemon] : run.daemons) {
        AddLateIn(daemon.failedStarts, late);
    }
    return late;
}

} // namespace vqrx::client::v0
