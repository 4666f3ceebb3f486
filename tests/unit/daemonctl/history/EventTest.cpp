#include "Event.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <utility>

namespace vqrx::test {
namespace {

using client::v0::Event;
using client::v0::EventKind;
using client::v0::EventOf;

Event AboutDaemon(EventKind kind, std::uint32_t id, std::uint32_t process, const char* command)
{
    Event event;
    event.kind = kind;
    event.daemonId = id;
    event.processId = process;
    event.command = command;
    return event;
}

TEST(EventOf, reads_daemon_process_and_command)
{
    EXPECT_EQ(EventOf(R"(Start DaemonId(3) PId(1234) : C:\FW\App\video.exe -x )"),
              AboutDaemon(EventKind::kStarted, 3, 1234, R"(C:\FW\App\video.exe -x )"));
    EXPECT_EQ(EventOf(R"(Unable to start DaemonId(3) PId(1234) : C:\a.exe )"),
              AboutDaemon(EventKind::kStartFailed, 3, 1234, R"(C:\a.exe )"));
    EXPECT_EQ(EventOf("Attach DaemonId(4294967295) PId(4294967295) : Spooler"),
              AboutDaemon(EventKind::kAttached, 4294967295U, 4294967295U, "Spooler"));
    EXPECT_EQ(EventOf("Unable to attach DaemonId(1) PId(2) :  "),
              AboutDaemon(EventKind::kAttachFailed, 1, 2, " "));
    EXPECT_EQ(EventOf("Detached DaemonId(1) PId(2) : a.exe "),
              AboutDaemon(EventKind::kDetached, 1, 2, "a.exe "));
    EXPECT_EQ(EventOf("Unable to stop DaemonId(1) PId(2) : a.exe "),
              AboutDaemon(EventKind::kStopFailed, 1, 2, "a.exe "));
}

std::string Repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (; count > 0; --count) {
        all += text;
    }
    return all;
}

// The log cuts a record after 1040 bytes; Windows allows a service a name of 256 characters.
TEST(EventOf, takes_a_cut_command_for_that_of_a_program_and_not_for_the_name_of_a_service)
{
    const std::string start = "Start DaemonId(1) PId(2) : ";
    const std::string cut = R"(C:\a.exe -x )" + Repeated("\xC3\xBC", 246);
    EXPECT_EQ(EventOf(start + cut).command, cut + " ");
    const std::string longestService = Repeated("\xC3\xBC", 256);
    EXPECT_EQ(EventOf(start + longestService).command, longestService);
}

TEST(EventOf, reads_the_stop_method)
{
    Event expected = AboutDaemon(EventKind::kStopped, 7, 8, "a.exe ");
    expected.count = 2;
    EXPECT_EQ(EventOf("Stop (2) DaemonId(7) PId(8) : a.exe "), expected);
}

TEST(EventOf, reads_a_failed_start_of_a_daemon_without_process)
{
    const Event event = EventOf(R"(Unable to start C:\FW\App\video.exe -x )");
    EXPECT_EQ(event.kind, EventKind::kStartFailed);
    EXPECT_FALSE(event.daemonId);
    EXPECT_EQ(event.command, R"(C:\FW\App\video.exe -x )");
}

TEST(EventOf, reads_service_and_reason_of_an_end)
{
    const Event program = EventOf("Exception caught in : Access violation");
    EXPECT_EQ(program.kind, EventKind::kEnded);
    EXPECT_EQ(program.service, "");
    EXPECT_EQ(program.reason, "Access violation");
    const Event service = EventOf("Exception caught in Svc: two: Unknown (0x0)");
    EXPECT_EQ(service.service, "Svc: two");
    EXPECT_EQ(service.reason, "Unknown (0x0)");
}

TEST(EventOf, knows_every_message_of_the_supervisor)
{
    for (
        const auto& [text, kind] : std::initializer_list<std::pair<const char*, EventKind>>{
            {"Detected Windows Firewall with Advanced Security", EventKind::kFirewallDetected},
            {"Firewall: Could not connect to service manager", EventKind::kFirewallStarting},
            {"Firewall: Could not open service (1060)", EventKind::kFirewallStarting},
            {"Firewall: Could not query service config", EventKind::kFirewallStarting},
            {"Firewall: Service is disabled.", EventKind::kFirewallStarting},
            {"Firewall: Could not query service status", EventKind::kFirewallStarting},
            {"Firewall: Current status code 2", EventKind::kFirewallStarting},
            {"Firewall: Waiting 2 s for the service to be running.", EventKind::kFirewallStarting},
            {"Firewall: CoCreateInstance failed: 0x80040154", EventKind::kFirewallStarting},
            {"Firewall: get_LocalPolicy failed: 0x80004005", EventKind::kFirewallStarting},
            {"Firewall: service is not yet started, waiting 1 s", EventKind::kFirewallStarting},
            {"Firewall: get_CurrentProfile failed: 0x80004005", EventKind::kFirewallStarting},
            {"Firewall: Windows Firewall with Advanced Security not available !",
             EventKind::kFirewall},
            {"Firewall: Failed to add rule.: 0x80070005", EventKind::kFirewall},
            {"CoInitializeSecurity error No such interface", EventKind::kComSecurityFailed},
            {"Connecting to WMI resource ...", EventKind::kWmiConnecting},
            {"Connected to WMI resource", EventKind::kWmiConnected},
            {"Init WMI errror out of memory", EventKind::kWmiFailed},
            {"RotRegistration errror x", EventKind::kPublicationFailed},
            {"Deamon Thread started", EventKind::kSupervisionStarted},
            {"Exit", EventKind::kExitRequested},
            {"3 Processes still registered", EventKind::kStillRegistered},
            {"Deamon Thread is exiting...", EventKind::kSupervisionEnded},
            {"Overflowed message queue.", EventKind::kQueueOverflow},
            {"Log file C:\\a.log is written again. Messages missing in it: 3",
             EventKind::kLogOutage},
            {"Log file C:\\a.log is written again. Messages missing in it: 3. The damaged file is kept "
             "as C:\\a.log.damaged",
             EventKind::kLogOutage},
            {"Log file C:\\a.log cannot be written: No space left on device. Messages are lost until "
             "it can be written again",
             EventKind::kOther},
            {"Exception occured : std::bad_alloc", EventKind::kSupervisionError},
            {"Unknown exception occured", EventKind::kSupervisionError},
            {"Pin output buffer full : video", EventKind::kOther}}) {
        EXPECT_EQ(EventOf(text).kind, kind) << text;
    }
    EXPECT_EQ(EventOf("3 Processes still registered").count, 3U);
    EXPECT_EQ(EventOf("Log file a is written again. Messages missing in it: 12").count, 12U);
}

TEST(EventOf, returns_kOther_for_any_other_text)
{
    for (const char* const text :
         {"", "Exit ", "Exiting", "Stop (x) DaemonId(1) PId(2) : a", "Stop (1", "Starting",
          "99999999999 Processes still registered", "Exception caught in nothing",
          " Processes still registered", "Exception caught",
          "Log file a is written again. Messages missing in it: x",
          "A Log file a is written again. Messages missing in it: 1"}) {
        EXPECT_EQ(EventOf(text).kind, EventKind::kOther) << text;
    }
}

TEST(EventOf, reads_a_damaged_description_as_a_command)
{
    for (const char* const text : {"DaemonId(1", "DaemonId(1) PId(", "DaemonId(x) PId(2) : a",
                                   "DaemonId(99999999999) PId(2) : a", "DaemonId(1) PId(2) :"}) {
        const Event event = EventOf(std::string("Start ") + text);
        EXPECT_FALSE(event.daemonId) << text;
        EXPECT_EQ(event.command, text);
    }
}

} // namespace
} // namespace vqrx::test
