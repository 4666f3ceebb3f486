#include "MetricsText.h"

#include "FakeLog.h"
#include "SomeDaemons.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

MachineMetrics Machine()
{
    MachineMetrics machine;
    machine.version = "1.0.0";
    machine.nowMs = 1'763'265'156'123;
    machine.supervisorUp = true;
    machine.logReadable = true;
    return machine;
}

TEST(MetricsText, Shows_the_supervisor_and_its_log)
{
    MachineMetrics machine = Machine();
    machine.supervisor = ProcessFacts{};
    machine.supervisor->createdMs = 1'000'500;
    machine.supervisor->cpuMs = 1500;
    machine.supervisor->memoryBytes = 4096;
    machine.recordsMissing = 7;
    machine.queueOverflows = 2;
    const std::string text = MetricsText(machine, {});
    EXPECT_THAT(text, HasSubstr("# TYPE daemonmanager_up gauge\n"
                                "# HELP daemonmanager_up 1 if the supervisor answers.\n"
                                "daemonmanager_up 1\n"));
    for (const char* sample :
         {"\ndaemonmanager_build_info{version=\"1.0.0\"} 1\n",
          "\ndaemonmanager_written_time_seconds 1763265156.123\n",
          "\ndaemonmanager_process_start_time_seconds 1000.5\n",
          "\ndaemonmanager_process_cpu_seconds 1.5\n",
          "\ndaemonmanager_process_resident_memory_bytes 4096\n",
          "\ndaemonmanager_log_readable 1\n", "\ndaemonmanager_log_damaged 0\n",
          "\ndaemonmanager_log_records_missing 7\n", "\ndaemonmanager_log_queue_overflows 2\n",
          "\ndaemonmanager_daemons 0\n"}) {
        EXPECT_THAT(text, HasSubstr(sample));
    }
    EXPECT_THAT(text, EndsWith("\n# EOF\n"));
}

TEST(MetricsText, Without_a_supervisor_shows_no_daemons)
{
    MachineMetrics machine = Machine();
    machine.supervisorUp = false;
    const std::string text = MetricsText(machine, {});
    EXPECT_THAT(text, HasSubstr("\ndaemonmanager_up 0\n"));
    EXPECT_THAT(text, Not(HasSubstr("daemonmanager_daemon")));
}

TEST(MetricsText, Shows_each_daemon_with_its_labels)
{
    const std::string text = MetricsText(Machine(), SomeDaemons());
    const std::string first =
        "{id=\"0\",command=\"C:\\\\FW\\\\App\\\\a.exe \xC3\xBC\",service=\"false\",attached=\"false\"";
    const std::string broken = "{id=\"-\",command=\"no.exe\",service=\"false\",attached=\"false\"";
    for (const std::string& sample :
         {"daemonmanager_daemon_up" + first + "} 1\n", "daemonmanager_daemon_up" + broken + "} 0\n",
          "daemonmanager_daemon_start_time_seconds" + first + "} 1000\n",
          "daemonmanager_daemon_restarts" + first + "} 2\n",
          "daemonmanager_daemon_last_exit_time_seconds" + first + ",reason=\"exit code 3\"} 999\n",
          "daemonmanager_daemon_last_exit_code" + first + "} 3\n",
          "daemonmanager_daemon_cpu_seconds" + first + "} 0.5\n",
          "daemonmanager_daemon_memory_bytes" + first + "} 1572864\n",
          std::string("daemonmanager_daemons 3\n"),
          std::string("daemonmanager_daemons_cannot_start 1\n")}) {
        EXPECT_THAT(text, HasSubstr("\n" + sample));
    }
    EXPECT_THAT(text, Not(HasSubstr("daemonmanager_daemon_start_time_seconds" + broken)));
}

TEST(MetricsText, Daemon_that_this_user_may_not_examine_is_neither_up_nor_down)
{
    DaemonStatus daemon;
    daemon.id = 7;
    daemon.state = RunState::kUnknown;
    daemon.processId = 12;
    daemon.command = "a.exe ";
    const std::string text = MetricsText(Machine(), {daemon});
    EXPECT_THAT(text, Not(HasSubstr("daemonmanager_daemon_up{")));
    EXPECT_THAT(text, HasSubstr("daemonmanager_daemon_crash_loop{id=\"7\""));
}

TEST(MetricsText, Escapes_and_shortens_labels)
{
    DaemonStatus daemon;
    daemon.command = "say \"hi\"\n\x1B " + std::string(194, 'x') + "\xC3\xBC\xC3\xBC ";
    const std::string text = MetricsText(Machine(), {daemon});
    EXPECT_THAT(text, HasSubstr("command=\"say \\\"hi\\\"\\\\x0A\\\\x1B xxx"));
    EXPECT_THAT(text, HasSubstr("xxx...\",service"));
    EXPECT_THAT(text, Not(HasSubstr("\xC3...")));
}

TEST(MetricsText, Daemons_that_nothing_else_tells_apart_have_numbers)
{
    DaemonStatus daemon;
    daemon.state = RunState::kEnded;
    daemon.command = "a.exe ";
    const std::string text = MetricsText(Machine(), {daemon, daemon, daemon});
    for (const char* id : {"{id=\"-\",", "{id=\"-#2\",", "{id=\"-#3\","}) {
        EXPECT_THAT(text, HasSubstr(std::string("daemonmanager_daemon_up") + id));
    }
}

TEST(MetricsText, Of_very_many_daemons_shows_a_thousand_with_those_in_trouble_and_counts_all)
{
    std::vector<DaemonStatus> daemons(10'000);
    for (std::size_t index = 0; index < daemons.size(); ++index) {
        daemons[index].id = static_cast<std::uint32_t>(index);
        daemons[index].state = RunState::kRunning;
        daemons[index].processId = 12;
        daemons[index].command = "a.exe ";
    }
    daemons.back().state = RunState::kRestarting;
    const std::string text = MetricsText(Machine(), daemons);
    EXPECT_THAT(text, HasSubstr("\ndaemonmanager_daemons 10000\n"));
    EXPECT_THAT(text, HasSubstr("\ndaemonmanager_daemons_running 9999\n"));
    EXPECT_THAT(text, HasSubstr("\ndaemonmanager_daemons_crash_loop 1\n"));
    EXPECT_THAT(text, HasSubstr("daemonmanager_daemon_crash_loop{id=\"9999\""));
    EXPECT_THAT(text, HasSubstr("daemonmanager_daemon_up{id=\"998\""));
    EXPECT_THAT(text, Not(HasSubstr("daemonmanager_daemon_up{id=\"999\"")));
}

TEST(CountLatePasses, Failed_starts_that_are_2_to_15_seconds_apart_show_a_late_pass)
{
    FakeLog log;
    log.Begin();
    const auto pause = [&log](int seconds) {
        for (int second = 1; second < seconds; ++second) {
            log.Add(2, "something else");
        }
        log.Add(1, "Unable to start no.exe ");
    };
    for (const int seconds : {1, 1, 2, 3, 15, 16}) {
        pause(seconds);
    }
    EXPECT_EQ(CountLatePasses(log.Timeline().runs.back()), std::optional<std::uint64_t>(2));
}

TEST(CountLatePasses, Without_failed_starts_that_follow_each_other_nobody_has_seen_the_passes)
{
    FakeLog log;
    log.Begin();
    EXPECT_EQ(CountLatePasses(log.Timeline().runs.back()), std::nullopt);
    log.Add(1, "Unable to start no.exe ");
    EXPECT_EQ(CountLatePasses(log.Timeline().runs.back()), std::nullopt);
    for (int second = 1; second < 16; ++second) {
        log.Add(2, "something else");
    }
    log.Add(1, "Unable to start no.exe "); // a client stopped the daemon meanwhile
    EXPECT_EQ(CountLatePasses(log.Timeline().runs.back()), std::nullopt);
    log.Add(1, "Unable to start no.exe ");
    EXPECT_EQ(CountLatePasses(log.Timeline().runs.back()), std::optional<std::uint64_t>(0));
}

TEST(MetricsText, Writes_late_passes_only_if_somebody_has_seen_the_passes)
{
    MachineMetrics machine = Machine();
    EXPECT_THAT(MetricsText(machine, {}), Not(HasSubstr("daemonmanager_late_passes")));
    machine.latePasses = 0;
    EXPECT_THAT(MetricsText(machine, {}), HasSubstr("\ndaemonmanager_late_passes 0\n"));
}

} // namespace
} // namespace vqrx::test
