#include "Event.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <system_error>
#include <utility>

namespace vqrx::client::v0 {
namespace {

struct KnownText {
    std::string_view text;
    EventKind kind;
};

constexpr std::array<KnownText, 12> kFixed = {{
    {"Detected Windows Firewall with Advanced Security", EventKind::kFirewallDetected},
    {"Connecting to WMI resource ...", EventKind::kWmiConnecting},
    {"Connected to WMI resource", EventKind::kWmiConnected},
    {"Deamon Thread started", EventKind::kSupervisionStarted},
    {"Deamon Thread is exiting...", EventKind::kSupervisionEnded},
    {"Exit", EventKind::kExitRequested},
    {"Overflowed message queue.", EventKind::kQueueOverflow},
    {"Unknown exception occured", EventKind::kSupervisionError},
    {"Firewall: Could not connect to service manager", EventKind::kFirewallStarting},
    {"Firewall: Could not query service config", EventKind::kFirewallStarting},
    {"Firewall: Could not query service status", EventKind::kFirewallStarting},
    {"Firewall: Service is disabled.", EventKind::kFirewallStarting},
}};

constexpr std::array<KnownText, 12> kBeginnings = {{
    {"CoInitializeSecurity error ", EventKind::kComSecurityFailed},
    {"Init WMI errror ", EventKind::kWmiFailed},
    {"RotRegistration errror ", EventKind::kPublicationFailed},
    {"Exception occured : ", EventKind::kSupervisionError},
    {"Firewall: Could not open service (", EventKind::kFirewallStarting},
    {"Firewall: Current status code ", EventKind::kFirewallStarting},
    {"Firewall: Waiting ", EventKind::kFirewallStarting},
    {"Firewall: CoCreateInstance failed: ", EventKind::kFirewallStarting},
    {"Firewall: get_LocalPolicy failed: ", EventKind::kFirewallStarting},
    {"Firewall: service is not yet started, waiting ", EventKind::kFirewallStarting},
    {"Firewall: get_CurrentProfile failed: ", EventKind::kFirewallStarting},
    {"Firewall: ", EventKind::kFirewall},
}};

// The description of a daemon follows each of these.
constexpr std::array<KnownText, 6> kAboutDaemons = {{
    {"Start ", EventKind::kStarted},
    {"Unable to start ", EventKind::kStartFailed},
    {"Unable to stop ", EventKind::kStopFailed},
    {"Attach ", EventKind::kAttached},
    {"Unable to attach ", EventKind::kAttachFailed},
    {"Detached ", EventKind::kDetached},
}};

bool Take(std::string_view& text, std::string_view beginning)
{
    if (!text.starts_with(beginning)) {
        return false;
    }
    text.remove_prefix(beginning.size());
    return true;
}

bool TakeNumber(std::string_view& text, std::uint32_t& number)
{
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{}) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(rest - text.data()));
    return true;
}

// Greatest length of a service's name, characters (Microsoft's page of CreateServiceW).
constexpr std::size_t kLongestServiceName = 256;

// Counts the characters of a text in UTF-8.
std::size_t CountOfCharacters(std::string_view utf8)
{
    constexpr unsigned kMask = 0xC0;
    constexpr unsigned kContinuation = 0x80;
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & kMask) != kContinuation;
    }));
}

// Reads "DaemonId(1) PId(2) : command"; or "command", for a daemon that never had a process.
void ReadDescription(std::string_view text, Event& event)
{
    std::string_view rest = text;
    std::uint32_t daemonId = 0;
    std::uint32_t processId = 0;
    if (Take(rest, "DaemonId(") && TakeNumber(rest, daemonId) && Take(rest, ") PId(") &&
        TakeNumber(rest, processId) && Take(rest, ") : ")) {
        event.daemonId = daemonId;
        event.processId = processId;
        text = rest;
    }
    event.command = text;
    if (!event.command.ends_with(' ') && CountOfCharacters(event.command) > kLongestServiceName) {
        event.command += ' '; // of a program: its record reached the greatest length and was cut
    }
}

// Reads "Exception caught in service: reason". The service's name may hold a colon, the reason
// never does.
bool ReadEnd(std::string_view text, Event& event)
{
    if (!Take(text, "Exception caught in ")) {
        return false;
    }
    const std::size_t colon = text.rfind(": ");
    if (colon == std::string_view::npos) {
        return false;
    }
    event.kind = EventKind::kEnded;
    event.service = text.substr(0, colon);
    event.reason = text.substr(colon + 2);
    return true;
}

// Reads "Stop (method) description".
bool ReadStop(std::string_view text, Event& event)
{
    std::uint32_t method = 0;
    if (!Take(text, "Stop (") || !TakeNumber(text, method) || !Take(text, ") ")) {
        return false;
    }
    event.kind = EventKind::kStopped;
    event.count = method;
    ReadDescription(text, event);
    return true;
}

// Reads "3 Processes still registered".
bool ReadStillRegistered(std::string_view text, Event& event)
{
    std::uint32_t count = 0;
    if (!TakeNumber(text, count) || text != " Processes still registered") {
        return false;
    }
    event.kind = EventKind::kStillRegistered;
    event.count = count;
    return true;
}

// Reads "Log file path is written again. Messages missing in it: 3". More may follow.
bool ReadOutage(std::string_view text, Event& event)
{
    constexpr std::string_view kMissing = " is written again. Messages missing in it: ";
    const std::size_t missing = text.find(kMissing);
    if (!text.starts_with("Log file ") || missing == std::string_view::npos) {
        return false;
    }
    text.remove_prefix(missing + kMissing.size());
    if (!TakeNumber(text, event.count)) {
        return false;
    }
    event.kind = EventKind::kLogOutage;
    return true;
}

} // namespace

std::string WithoutBlank(std::string command)
{
    if (command.ends_with(' ')) {
        command.pop_back();
    }
    return command;
}

Event EventOf(std::string_view text)
{
    Event event;
    for (const KnownText& known : kFixed) {
        if (text == known.text) {
            event.kind = known.kind;
            return event;
        }
    }
    for (const KnownText& known : kBeginnings) {
        if (text.starts_with(known.text)) {
            event.kind = known.kind;
            return event;
        }
    }
    for (const KnownText& known : kAboutDaemons) {
        std::string_view rest = text;
        if (Take(rest, known.text)) {
            event.kind = known.kind;
            ReadDescription(rest, event);
            return event;
        }
    }
    if (ReadEnd(text, event) || ReadStop(text, event) || ReadStillRegistered(text, event) ||
        ReadOutage(text, event)) {
        return event;
    }
    return {};
}

std::string_view NameOf(EventKind kind) noexcept
{
    switch (kind) {
    case EventKind::kFirewallDetected:
        return "firewall-detected";
    case EventKind::kFirewallStarting:
    case EventKind::kFirewall:
        return "firewall";
    case EventKind::kComSecurityFailed:
        return "com-security-failed";
    case EventKind::kWmiConnecting:
        return "wmi-connecting";
    case EventKind::kWmiConnected:
        return "wmi-connected";
    case EventKind::kWmiFailed:
        return "wmi-failed";
    case EventKind::kPublicationFailed:
        return "publication-failed";
    case EventKind::kSupervisionStarted:
        return "supervision-started";
    case EventKind::kStarted:
        return "started";
    case EventKind::kStartFailed:
        return "start-failed";
    case EventKind::kEnded:
        return "ended";
    case EventKind::kStopped:
        return "stopped";
    case EventKind::kStopFailed:
        return "stop-failed";
    case EventKind::kAttached:
        return "attached";
    case EventKind::kAttachFailed:
        return "attach-failed";
    case EventKind::kDetached:
        return "detached";
    case EventKind::kExitRequested:
        return "exit-requested";
    case EventKind::kStillRegistered:
        return "still-registered";
    case EventKind::kSupervisionEnded:
        return "supervision-ended";
    case EventKind::kSupervisionError:
        return "supervision-error";
    case EventKind::kQueueOverflow:
        return "queue-overflow";
    case EventKind::kLogOutage:
        return "log-outage";
    case EventKind::kOther:
        break;
    }
    return {};
}

} // namespace vqrx::client::v0
